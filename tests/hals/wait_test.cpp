// The wait of the HALs under signals.
#include "hals/wait.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kWait = 50ms;

// A timer that strikes every so many microseconds, as long as it lives.
class Timer {
public:
    explicit Timer(suseconds_t interval, int flags = 0)
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        action.sa_flags = flags;
        sigaction(SIGALRM, &action, nullptr);
        itimerval timer{{0, interval}, {0, interval}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
    ~Timer()
    {
        itimerval off{};
        setitimer(ITIMER_REAL, &off, nullptr);
    }
};

Clock::duration Waited()
{
    auto start = Clock::now();
    hals::WaitMicroseconds(std::chrono::microseconds{kWait}.count());
    return Clock::now() - start;
}

TEST(HalWait, TakesItsTime)
{
    EXPECT_GE(Waited(), kWait);
}

// An interval shorter than the wait: a wait that starts over at each signal never ends.
TEST(HalWait, IsNeitherShortenedNorMadeEndlessBySignals)
{
    for (int flags : {0, SA_RESTART})
        for (suseconds_t interval : {1'000, 10'000, 40'000}) {
            Timer timer{interval, flags};
            auto waited = Waited();
            EXPECT_GE(waited, kWait) << interval;
            EXPECT_LT(waited, 20 * kWait) << interval;
        }
}

}  // namespace
