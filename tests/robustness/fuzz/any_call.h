// Calls of exported functions with arguments from the input. What a pointer leads to is on the heap
// and exactly as large as the function may expect.
#pragma once

#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "tests/robustness/fuzz/platform.h"

namespace fuzz {

class Arguments {
public:
    // An object that lives until the call has returned.
    void* Allocate(size_t size)
    {
        blocks_.push_back(std::make_unique<uint8_t[]>(size));
        platform.input->ConsumeData(blocks_.back().get(), size);
        return blocks_.back().get();
    }

    template <typename T>
    T Draw()
    {
        if constexpr (std::is_pointer_v<T>)
            return DrawPointer<std::remove_cv_t<std::remove_pointer_t<T>>>();
        else if constexpr (std::is_same_v<T, uint8_t>)
            return DrawIndex();
        else
            return Any<T>();
    }

private:
    // Room for what HALs and the library write to an opaque buffer.
    static constexpr size_t kOpaque = 16384;
    static constexpr size_t kMac = 6;

    template <typename T>
    T* DrawPointer()
    {
        if (Any<uint8_t>() >= 0xF0)
            return nullptr;
        if constexpr (std::is_void_v<T>)
            return Allocate(kOpaque);
        else if constexpr (std::is_same_v<T, uint8_t>)
            return static_cast<T*>(Allocate(kMac));
        else
            return static_cast<T*>(Allocate(sizeof(T)));
    }

    // Indices mostly near the limits.
    uint8_t DrawIndex()
    {
        auto drawn = Any<uint8_t>();
        return drawn < 0xE0 ? drawn % 10 : Any<uint8_t>();
    }

    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
};

template <typename Result, typename... Args>
void CallAny(Result (*function)(Args...))
{
    Arguments arguments;
    function(arguments.Draw<Args>()...);
}

}  // namespace fuzz
