// The function that would have been called without this library.
#pragma once

#include <dlfcn.h>

namespace vboard::preload {

template <typename Function>
Function Next(Function& cache, const char* name)
{
    if (cache == nullptr)
        cache = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
    return cache;
}

}  // namespace vboard::preload

// The next definition of a C library function in the search order.
#define VBOARD_NEXT(function)                             \
    ([]() {                                               \
        static decltype(&::function) cache = nullptr;     \
        return ::vboard::preload::Next(cache, #function); \
    }())
