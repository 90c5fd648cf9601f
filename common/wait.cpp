#include "common/wait.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace orblink {
namespace {

constexpr long kMicrosecondsPerSecond = 1000000;
constexpr long kNanosecondsPerMicrosecond = 1000;

timespec Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

// Rounded up. In words, which divide by constants at no cost: what divides 64 bits on i386 is larger
// than all of this.
long MicrosecondsUntil(const timespec& end)
{
    const timespec now = Now();
    const auto seconds = static_cast<long>(end.tv_sec - now.tv_sec);
    const long nanoseconds = end.tv_nsec - now.tv_nsec;
    const long toRoundUp = nanoseconds > 0 ? kNanosecondsPerMicrosecond - 1 : 0;
    return seconds * kMicrosecondsPerSecond +
           (nanoseconds + toRoundUp) / kNanosecondsPerMicrosecond;
}

// False when a signal cut the wait short.
bool Slept(long microseconds)
{
    return usleep(static_cast<useconds_t>(microseconds)) == 0 || errno != EINTR;
}

// Neither the whole seconds that sleep says are left nor a wait that starts over would do: the one
// ends too early, the other never ends under a fast timer.
void WaitUntil(const timespec& end)
{
    for (long left = MicrosecondsUntil(end); left > 0; left = MicrosecondsUntil(end))
        if (Slept(left))
            return;
}

}  // namespace

void WaitMicroseconds(unsigned microseconds)
{
    const auto wait = static_cast<long>(microseconds);
    timespec end = Now();
    end.tv_sec += wait / kMicrosecondsPerSecond;
    end.tv_nsec += wait % kMicrosecondsPerSecond * kNanosecondsPerMicrosecond;
    if (!Slept(wait))
        WaitUntil(end);
}

void WaitSeconds(unsigned seconds)
{
    timespec end = Now();
    end.tv_sec += static_cast<time_t>(seconds);
    if (sleep(seconds) != 0)
        WaitUntil(end);
}

}  // namespace orblink
