// A C function and its C++ counterpart, and what they hand out in a form that can be compared.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "bindings/cpp/orblink.hpp"
#include "tests/support/scripted_platform.h"

namespace obtest {

using orblink::Result;
using orblink::Status;

// 0 and what was handed out, or 1: not one, so that a result that was taken for another shows.
using Outcome = std::vector<uint64_t>;
inline const Outcome kRefused = {1};

struct Pair {
    const char* name;
    std::function<Outcome()> c;
    std::function<Outcome()> cpp;
};

inline Outcome Of(int code)
{
    return code == 0 ? Outcome{0} : kRefused;
}

inline Outcome Of(const Status& status)
{
    return status ? Outcome{0} : kRefused;
}

template <typename T, typename Values>
Outcome Of(const Result<T>& result, Values values)
{
    return result ? values(*result) : kRefused;
}

// A result that is one number.
template <typename T>
Outcome Of(const Result<T>& result)
{
    return Of(result, [](const T& value) { return Outcome{0, value}; });
}

template <typename T>
Outcome Taken(int (*function)(uint8_t, T*))
{
    T value{};
    return function(0, &value) == 0 ? Outcome{0, value} : kRefused;
}

inline uint32_t SumOf(const void* bytes, size_t size)
{
    uint32_t sum = 0;
    for (size_t i = 0; i < size; ++i)
        sum = sum * 31 + static_cast<const uint8_t*>(bytes)[i];
    return sum;
}

// The bytes of a table, told apart by their sum.
template <typename T>
Outcome BytesOf(const T& value)
{
    return {0, SumOf(&value, sizeof value)};
}

template <typename T>
Outcome BytesOf(const Result<T>& result)
{
    return Of(result, [](const T& value) { return BytesOf(value); });
}

template <typename T>
Outcome Copied(int (*function)(uint8_t, void*))
{
    T value{};
    return function(0, &value) == 0 ? BytesOf(value) : kRefused;
}

// What a call writes into a value of that type.
template <typename T, typename Call>
Outcome Got(Call call)
{
    T value{};
    return call(&value) == 0 ? Outcome{0, value} : kRefused;
}

// Both do the same from the same state: results, lines and the record after it. The first call of a
// process opens what later ones find open, so there is one before them.
template <typename Region>
void ExpectSame(const Pair& pair, Region& region)
{
    SCOPED_TRACE(pair.name);
    Transcript& transcript = Platform().transcript;
    const Region before = region;
    pair.c();
    region = before;
    transcript.Clear();
    const Outcome byC = pair.c();
    const Lines said = transcript.All();
    const Region after = region;
    region = before;
    transcript.Clear();
    EXPECT_EQ(pair.cpp(), byC);
    EXPECT_EQ(transcript.All(), said);
    EXPECT_EQ(BytesOf(region), BytesOf(after));
    region = before;
}

}  // namespace obtest
