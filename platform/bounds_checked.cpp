#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/ob_platform.h"

namespace {

// Annex K's RSIZE_MAX: a size above it is a negative number that went astray.
constexpr size_t kSizeMax = SIZE_MAX / 2;

bool Overlap(const void* dest, size_t destSize, const void* src, size_t srcSize)
{
    const auto d = reinterpret_cast<uintptr_t>(dest);
    const auto s = reinterpret_cast<uintptr_t>(src);
    return d < s + srcSize && s < d + destSize;
}

}  // namespace

#pragma GCC visibility push(default)

int kova_memcpy_s(void* Dest, size_t DestMax, const void* Src, size_t Count)
{
    if (Dest == nullptr || DestMax > kSizeMax)
        return EINVAL;
    if (Src == nullptr || Count > DestMax || Overlap(Dest, Count, Src, Count)) {
        memset(Dest, 0, DestMax);
        return EINVAL;
    }
    memcpy(Dest, Src, Count);
    return 0;
}

int kova_strncpy_s(char* Dest, size_t DestMax, const char* Src, size_t Count)
{
    if (Dest == nullptr || DestMax == 0 || DestMax > kSizeMax)
        return EINVAL;
    if (Src == nullptr || Count > kSizeMax) {
        Dest[0] = '\0';
        return EINVAL;
    }
    const size_t length = strnlen(Src, Count < DestMax ? Count : DestMax);
    if (length >= DestMax || Overlap(Dest, length + 1, Src, length)) {
        Dest[0] = '\0';
        return ERANGE;
    }
    memcpy(Dest, Src, length);
    Dest[length] = '\0';
    return 0;
}

int kova_vsnprintf_s(char* Dest, size_t DestMax, const char* Format, va_list Args)
{
    if (Dest == nullptr || DestMax == 0 || DestMax > kSizeMax)
        return -EINVAL;
    if (Format == nullptr) {
        Dest[0] = '\0';
        return -EINVAL;
    }
    return vsnprintf(Dest, DestMax, Format, Args);
}

#pragma GCC visibility pop
