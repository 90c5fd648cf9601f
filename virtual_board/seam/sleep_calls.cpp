#include "virtual_board/seam/sleep_calls.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace vboard::seam {
namespace {

constexpr int64_t kNanoseconds = 1'000'000'000;
constexpr double kLongest = 1e18;  // nanoseconds; some 30 years

struct Wait64 {
    int64_t seconds;
    int64_t nanoseconds;
};
struct Wait32 {
    int32_t seconds;
    int32_t nanoseconds;
};

Wait64 ReadTime(const Target& target, uint64_t address)
{
    if (target.Is32Bit() && target.Call() != Call::kClockSleep64) {
        const auto time = target.ReadAs<Wait32>(address);
        return {time.seconds, time.nanoseconds};
    }
    return target.ReadAs<Wait64>(address);
}

bool IsScaledClock(int clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC || clock == CLOCK_BOOTTIME ||
           clock == CLOCK_TAI;
}

}  // namespace

Verdict ScaledSleep(const Target& target, double scale)
{
    const bool ofClock = target.Call() != Call::kSleep;
    if (ofClock &&
        (!IsScaledClock(target.IntArgument(0)) || (target.IntArgument(1) & TIMER_ABSTIME) != 0))
        return Continue();
    const Wait64 time = ReadTime(target, target.Argument(ofClock ? 2 : 0));
    if (time.seconds < 0 || time.nanoseconds < 0 || time.nanoseconds >= kNanoseconds)
        return Fail(EINVAL);
    const double wanted = static_cast<double>(time.seconds) * static_cast<double>(kNanoseconds) +
                          static_cast<double>(time.nanoseconds);
    return Sleep(
        std::chrono::nanoseconds{static_cast<int64_t>(std::min(wanted * scale, kLongest))});
}

}  // namespace vboard::seam
