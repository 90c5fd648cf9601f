// A buffer that ends where memory does: what reaches past it, or writes to it where it may only be
// read, ends the process at once. After its life nobody can touch it any more.
#pragma once

#include <cstddef>
#include <cstdint>

namespace halcheck {

class Guarded {
public:
    enum class Rights { kReadWrite, kReadOnly };

    // Filled with the byte; of the slot that it is for.
    Guarded(const char* slot, size_t size, uint8_t fill, Rights rights = Rights::kReadWrite);
    ~Guarded();
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    template <typename Value>
    Value* As()
    {
        return reinterpret_cast<Value*>(data_);
    }
    // Whether every byte still is what the buffer was filled with.
    bool IsUntouched() const;
    // Reports what was written before the beginning.
    void CheckBeginning() const;

private:
    const char* slot_;
    size_t size_;
    uint8_t fill_;
    size_t readable_;
    uint8_t* pages_;
    uint8_t* data_;
};

}  // namespace halcheck
