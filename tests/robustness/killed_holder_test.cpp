// How soon a call that waits goes on when the process that holds the lock is killed.
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "tests/robustness/child.h"
#include "tests/robustness/effort.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

using Clock = std::chrono::steady_clock;

int64_t Microseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
        .count();
}

// Sits in a HAL slot with the lock taken.
void HoldTheLock()
{
    Platform().slots["PrintMachineState"] = [](const SlotArgs&) {
        pause();
        return 0;
    };
    ORBLINK_PrintMachineState(0);
}

bool IsTaken()
{
    for (int i = 0; i < 2000 && LockValue(Family::kSwitch) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return LockValue(Family::kSwitch) == 0;
}

int WaitingCalls()
{
    return semctl(semget(ftok("/var/tmp/orblink_sem", 97), 1, 0), 0, GETNCNT);
}

// From the kill to the end of the call that waited; -1 when it never ended.
int64_t WaitAfterAKill()
{
    int said[2];
    EXPECT_EQ(pipe(said), 0);
    Background holder(HoldTheLock);
    EXPECT_TRUE(IsTaken());
    Background waiting([&] {
        uint8_t count = 0;
        const int result = ORBLINK_GetNumOfSwitches(&count);
        const int64_t end = result == 0 && count == 1 ? Microseconds() : -1;
        if (write(said[1], &end, sizeof(end)) != sizeof(end))
            _exit(1);
    });
    for (int i = 0; i < 2000 && WaitingCalls() != 1; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int64_t begin = Microseconds();
    kill(holder.Pid(), SIGKILL);
    const bool ended = waiting.Succeeds(10000);
    int64_t end = -1;
    if (!ended || read(said[0], &end, sizeof(end)) != sizeof(end))
        end = -1;
    close(said[0]);
    close(said[1]);
    return end == -1 ? -1 : end - begin;
}

TEST(KilledHolder, LetsTheNextCallGoOnAtOnce)
{
    InitialiseElsewhere();
    const int rounds = Thorough() ? 500 : 20;
    std::vector<int64_t> waits;
    for (int round = 0; round < rounds; ++round) {
        const int64_t wait = WaitAfterAKill();
        ASSERT_GE(wait, 0) << "round " << round;
        waits.push_back(wait);
    }
    std::sort(waits.begin(), waits.end());
    printf("| wait after a kill | %d kills: median %lld us, worst %lld us |\n", rounds,
           static_cast<long long>(waits[waits.size() / 2]), static_cast<long long>(waits.back()));
    EXPECT_LT(waits.back(), 1000000);
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
}

}  // namespace
