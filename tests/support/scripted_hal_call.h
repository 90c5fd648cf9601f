// The way from a scripted HAL library to the test program that loaded it.
#pragma once

#include <cstdint>
#include <initializer_list>

extern "C" int ObTestHalCall(int library, const char* slot, const char* signature,
                             const intptr_t* args, int count);

namespace obtest {

inline intptr_t AsArg(const void* pointer)
{
    return reinterpret_cast<intptr_t>(pointer);
}

template <typename Function>
requires std::is_function_v<std::remove_pointer_t<Function>>
inline intptr_t AsArg(Function function)
{
    return reinterpret_cast<intptr_t>(function);
}

inline intptr_t AsArg(int value)
{
    return value;
}

inline intptr_t AsArg(uint32_t value)
{
    return static_cast<intptr_t>(value);
}

inline int Call(const char* slot, const char* signature, std::initializer_list<intptr_t> args)
{
    return ObTestHalCall(OBTEST_LIBRARY, slot, signature, args.begin(),
                         static_cast<int>(args.size()));
}

}  // namespace obtest

// A slot that hands its arguments to the test program. Signature letters: i int, u unsigned,
// p pointer, m MAC address.
#define OB_SLOT(name, signature) \
    .name = [](auto... args) { return obtest::Call(#name, signature, {obtest::AsArg(args)...}); }
