// Tools of the interposed platform functions.
#pragma once

#include <dlfcn.h>

#include <string>

namespace obtest {

// True when the code at the address belongs to liborblink: only its calls are recorded.
bool FromLibrary(const void* returnAddress);

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string Text(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace obtest

// Defines the function that the library reaches under the C name.
#define OB_INTERPOSE(result, name, ...)               \
    extern "C" __attribute__((visibility("default"))) \
    result ObTest_##name(__VA_ARGS__) __asm__(#name); \
    result ObTest_##name(__VA_ARGS__)

#define OB_FROM_LIBRARY ::obtest::FromLibrary(__builtin_return_address(0))
