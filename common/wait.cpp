#include "common/wait.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace orblink {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1000000000;
constexpr int64_t kNanosecondsPerMicrosecond = 1000;

int64_t Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

// False when a signal cut the wait short.
bool Slept(int64_t microseconds)
{
    return usleep(static_cast<useconds_t>(microseconds)) == 0 || errno != EINTR;
}

// Neither the whole seconds that sleep says are left nor a wait that starts over would do: the one
// ends too early, the other never ends under a fast timer.
void WaitUntil(int64_t end)
{
    for (int64_t left = end - Now(); left > 0; left = end - Now())
        if (Slept((left + kNanosecondsPerMicrosecond - 1) / kNanosecondsPerMicrosecond))
            return;
}

}  // namespace

void WaitMicroseconds(unsigned microseconds)
{
    const int64_t start = Now();
    if (!Slept(microseconds))
        WaitUntil(start + microseconds * kNanosecondsPerMicrosecond);
}

void WaitSeconds(unsigned seconds)
{
    const int64_t start = Now();
    if (sleep(seconds) != 0)
        WaitUntil(start + seconds * kNanosecondsPerSecond);
}

}  // namespace orblink
