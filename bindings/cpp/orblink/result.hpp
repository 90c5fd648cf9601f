// What became of a call. A call that fails has logged why; there is no other code to look at.
#pragma once

#include <cassert>
#include <type_traits>

namespace orblink {

// The value of a call that succeeded, or nothing. The value stands where the C call has written it.
template <typename T = void>
class [[nodiscard]] Result {
public:
    static_assert(std::is_trivially_copyable_v<T>);

    Result(int code, T value) : value_(value), code_(code) {}

    // Calls fill with the address of the value; fill returns 0 when it has written it.
    template <typename Fill>
    explicit Result(Fill fill) : code_(fill(&value_))
    {
    }

    explicit operator bool() const { return code_ == 0; }
    const T& operator*() const
    {
        assert(code_ == 0);
        return value_;
    }
    const T* operator->() const { return &**this; }
    T ValueOr(T other) const { return code_ == 0 ? value_ : other; }

private:
    T value_;
    int code_;
};

template <>
class [[nodiscard]] Result<void> {
public:
    explicit Result(int code) : code_(code) {}
    explicit operator bool() const { return code_ == 0; }

private:
    int code_;
};

using Status = Result<>;

}  // namespace orblink
