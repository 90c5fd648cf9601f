// Waits while a timer's signals keep coming.
#include "common/wait.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>

using namespace orblink;
using std::chrono::milliseconds;

namespace {

struct Storm {
    int periodMilliseconds;
    int flags;
};

class WaitUnderSignals : public testing::TestWithParam<Storm> {
protected:
    WaitUnderSignals()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        action.sa_flags = GetParam().flags;
        sigaction(SIGALRM, &action, nullptr);
        SetTimer(GetParam().periodMilliseconds * 1000L);
    }

    ~WaitUnderSignals() override { SetTimer(0); }

    template <typename Wait>
    static milliseconds Measure(Wait wait)
    {
        const auto start = std::chrono::steady_clock::now();
        wait();
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    }

private:
    static void SetTimer(suseconds_t microseconds)
    {
        const itimerval timer = {{0, microseconds}, {0, microseconds}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

TEST_P(WaitUnderSignals, LastsAsLongAsMicrosecondsSay)
{
    const milliseconds taken = Measure([] { WaitMicroseconds(60000); });
    EXPECT_GE(taken, milliseconds(60));
    EXPECT_LT(taken, milliseconds(1000));
}

TEST_P(WaitUnderSignals, LastsAsLongAsSecondsSay)
{
    const milliseconds taken = Measure([] { WaitSeconds(2); });
    EXPECT_GE(taken, milliseconds(2000));
    EXPECT_LT(taken, milliseconds(2900));
}

INSTANTIATE_TEST_SUITE_P(Of, WaitUnderSignals,
                         testing::ValuesIn(std::vector<Storm>{
                             {1, 0}, {1, SA_RESTART}, {25, 0}, {400, SA_RESTART}}),
                         [](const auto& info) {
                             return "Every" + std::to_string(info.param.periodMilliseconds) + "ms" +
                                    (info.param.flags != 0 ? "Restarting" : "");
                         });

}  // namespace
