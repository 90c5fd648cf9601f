// sleep() and usleep() on the board's time: shortened or stretched by the time scale.

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "virtual_board/board/wire.h"
#include "virtual_board/preload/next.h"

namespace {

constexpr double kNanosecondsPerSecond = 1e9;

double TimeScale()
{
    static double scale = 0;
    if (scale > 0)
        return scale;
    const char* text = getenv(vboard::wire::kTimeScaleVariable);
    double given = text != nullptr ? strtod(text, nullptr) : 1;
    scale = given > 0 ? given : 1;
    return scale;
}

timespec ScaledTime(double seconds)
{
    auto total = static_cast<long long>(seconds * TimeScale() * kNanosecondsPerSecond) + 1;
    constexpr long long kSecond = 1'000'000'000;
    return {static_cast<time_t>(total / kSecond), static_cast<long>(total % kSecond)};
}

// The board's seconds still to wait, rounded up.
unsigned Unslept(const timespec& rest)
{
    double real = static_cast<double>(rest.tv_sec) +
                  static_cast<double>(rest.tv_nsec) / kNanosecondsPerSecond;
    return static_cast<unsigned>(real / TimeScale()) + 1;
}

}  // namespace

extern "C" {

unsigned sleep(unsigned seconds)
{
    if (TimeScale() == 1)
        return VBOARD_NEXT(sleep)(seconds);
    timespec wanted = ScaledTime(seconds);
    timespec rest{};
    if (VBOARD_NEXT(nanosleep)(&wanted, &rest) == 0)
        return 0;
    unsigned unslept = Unslept(rest);
    return unslept < seconds ? unslept : seconds;
}

int usleep(useconds_t microseconds)
{
    if (TimeScale() == 1)
        return VBOARD_NEXT(usleep)(microseconds);
    timespec wanted = ScaledTime(microseconds / 1e6);
    return VBOARD_NEXT(nanosleep)(&wanted, nullptr);
}

}  // extern "C"
