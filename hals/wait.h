// A wait that a signal cannot shorten, and that no timer can make endless.
#pragma once

#include <errno.h>
#include <stdint.h>
#include <time.h>
#include <unistd.h>

namespace hals {

inline uint64_t NowMicroseconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<uint64_t>(now.tv_nsec) / 1'000;
}

inline void WaitMicroseconds(uint32_t microseconds)
{
    uint64_t end = NowMicroseconds() + microseconds;
    while (usleep(microseconds) != 0 && errno == EINTR) {
        // One more for the part of a microsecond that was cut off.
        uint64_t now = NowMicroseconds();
        if (now > end)
            return;
        microseconds = static_cast<uint32_t>(end - now) + 1;
    }
}

}  // namespace hals
