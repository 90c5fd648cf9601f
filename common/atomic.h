// A value that threads read and write without a lock.
#pragma once

namespace orblink {

// Reads and writes in one order that all threads see. As std::atomic does it; but that header brings
// strings and exceptions with it, which no source here may use and each would be compiled with.
template <typename T>
class Atomic {
public:
    constexpr Atomic(T value = {}) : value_(value) {}
    ~Atomic() = default;
    Atomic(const Atomic&) = delete;
    Atomic& operator=(const Atomic&) = delete;

    [[gnu::always_inline]] T load() const { return __atomic_load_n(&value_, __ATOMIC_SEQ_CST); }
    [[gnu::always_inline]] operator T() const { return load(); }
    [[gnu::always_inline]] void operator=(T value)
    {
        __atomic_store_n(&value_, value, __ATOMIC_SEQ_CST);
    }

private:
    T value_;
};

}  // namespace orblink
