// Several real processes on one family.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

std::string Logs()
{
    return Joined(Platform().transcript.Log());
}

class Processes : public SwitchTest {
protected:
    // A process that sits in a HAL slot of a bring-up, with the semaphore held, until it is killed
    // or `seconds` have passed. Its waits take no time.
    static std::string BringUpThatLingers(int milliseconds)
    {
        Platform().slots["ResetSwitch"] = [milliseconds](const SlotArgs&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            return 0;
        };
        return std::to_string(ORBLINK_ResetDisable(0, 1, nullptr, 0));
    }
};

TEST_F(Processes, AnotherProcessAttachesAndSeesTheState)
{
    OtherProcess other([] {
        uint8_t count = 0;
        SwitchProvConfig config = {};
        if (ORBLINK_GetNumOfSwitches(&count) != 0 || ORBLINK_GetSwitchProvConfig(1, &config) != 0)
            return Logs();
        return std::to_string(count) + " switches, mtu " + std::to_string(config.mtuSize) +
               ", service " + std::to_string(ORBLINK_IsOrbLinkServiceOn(1));
    });
    Init(SwitchBoard::With({{}, {}}));
    Record(1).config.mtuSize = 1600;
    ORBLINK_SetOrbLinkServiceStatus(1, 4);
    EXPECT_EQ(other.Run(), "2 switches, mtu 1600, service 4");
}

TEST_F(Processes, WhatAnotherProcessStoresIsSeenHere)
{
    OtherProcess other([] { return std::to_string(ORBLINK_ResetDisable(0, 0, nullptr, 0)); });
    Init();
    EXPECT_EQ(other.Run(), "0");
    EXPECT_EQ(Record(0).config.state, 2U);
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
    EXPECT_LOGS("log2 ORBLINK_ResetDisable:# Switch is already enabled, DevIdx=0");
}

TEST_F(Processes, AnotherProcessLoadsTheHalWithoutItsInit)
{
    OtherProcess other([] {
        ORBLINK_ResetDisable(0, 0, nullptr, 0);
        return std::string(Platform().transcript.Has("hal0 Init(") ? "init" : "no init") +
               (Platform().transcript.Has("hal0 ResetSwitch(") ? ", reset" : ", no reset");
    });
    Init();
    EXPECT_EQ(other.Run(), "no init, reset");
}

TEST_F(Processes, ASecondInitOnceInAnotherProcessFailsAndLeavesTheRegion)
{
    OtherProcess other([] {
        const int result = ORBLINK_InitOnce(1);
        return std::to_string(result) + "\n" + Logs();
    });
    Init();
    Record(0).config.mtuSize = 1234;
    EXPECT_EQ(other.Run(),
              "-1\nlog1 _CreateGlobalSem:# semget() failed, cannot create sem, errno=" +
                  std::to_string(EEXIST) + "\nlog1 ORBLINK_InitOnce:# _CreateGlobalSem() failed\n");
    EXPECT_EQ(Record(0).config.mtuSize, 1234);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, AProcessThatWasRefusedInitOnceCanStillAttach)
{
    OtherProcess other([] {
        uint8_t count = 0;
        const int init = ORBLINK_InitOnce(1);
        const int get = ORBLINK_GetNumOfSwitches(&count);
        return std::to_string(init) + " " + std::to_string(get) + " " + std::to_string(count);
    });
    Init();
    EXPECT_EQ(other.Run(), "-1 0 1");
}

TEST_F(Processes, OthersGoOnWhenTheInitialiserHasEnded)
{
    InitElsewhere(SwitchBoard::With({{}, {}}));
    EXPECT_EQ(SemaphoreValue(), 1);
    uint8_t count = 0;
    EXPECT_EQ(ORBLINK_GetNumOfSwitches(&count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(ORBLINK_ResetDisable(1, 0, nullptr, 0), 0);
    EXPECT_EQ(Record(1).config.state, 2U);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, TheLockOfAHolderThatIsKilledInAHalSlotGoesToTheNextCall)
{
    OtherProcess holder([] { return BringUpThatLingers(60000); });
    Init();
    holder.Start();
    ASSERT_TRUE(Eventually([] { return SemaphoreValue() == 0; }));
    holder.Kill();
    EXPECT_EQ(SemaphoreValue(), 1);
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, ACallThatWaitsGetsTheLockWhenTheHolderIsKilled)
{
    OtherProcess holder([] { return BringUpThatLingers(60000); });
    OtherProcess waiting([] {
        uint8_t count = 0;
        const int result = ORBLINK_GetNumOfSwitches(&count);
        return std::to_string(result) + " " + std::to_string(count);
    });
    Init();
    holder.Start();
    ASSERT_TRUE(Eventually([] { return SemaphoreValue() == 0; }));
    waiting.Start();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    holder.Kill();
    EXPECT_EQ(waiting.Result(), "0 1");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, AnInitialiserThatIsKilledInAHalSlotLeavesTheLockFree)
{
    OtherProcess initialiser([] {
        Platform().mailbox.push_back(SwitchBoard::With({{}}).Message());
        Platform().slots["Init"] = [](const SlotArgs&) {
            std::this_thread::sleep_for(std::chrono::seconds(60));
            return 0;
        };
        return std::to_string(ORBLINK_InitOnce(1));
    });
    initialiser.Start();
    ASSERT_TRUE(Eventually([] { return access("/dev/shm/obos_orblink_driver", F_OK) == 0; }));
    ASSERT_TRUE(Eventually([] { return Region().NumOfSwitches == 1 && SemaphoreValue() == 0; }));
    initialiser.Kill();
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, ABringUpKeepsOtherCallsOutUntilItEnds)
{
    OtherProcess holder([] { return BringUpThatLingers(200); });
    Init();
    holder.Start();
    ASSERT_TRUE(Eventually([] { return SemaphoreValue() == 0; }));
    SwitchProvConfig config = {};
    EXPECT_EQ(ORBLINK_GetSwitchProvConfig(0, &config), 0);
    EXPECT_EQ(config.state, 2U) << "read after the bring-up";
    EXPECT_EQ(holder.Result(), "0");
}

TEST_F(Processes, ContendingProcessesNeverOverlap)
{
    // Each slot call marks the chip as in use for a moment: a second one that finds the mark set
    // has come in between.
    const auto work = [] {
        int overlaps = 0;
        Platform().slots["VendorSpecificIoctl"] = [&](const SlotArgs&) {
            auto* mark = static_cast<volatile uint8_t*>(&Region().halPrivData[0][0]);
            overlaps += *mark != 0 ? 1 : 0;
            *mark = 1;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            *mark = 0;
            return 1;  // ends the bring-up
        };
        int failures = 0;
        for (int i = 0; i < 100; ++i)
            failures += ORBLINK_ResetDisable(0, 1, nullptr, 0) == -1 ? 1 : 0;
        return std::to_string(failures) + " refused, " + std::to_string(overlaps) + " overlaps";
    };
    OtherProcess first(work);
    OtherProcess second(work);
    OtherProcess third(work);
    Init();
    for (auto* process : {&first, &second, &third})
        process->Start();
    for (auto* process : {&first, &second, &third})
        EXPECT_EQ(process->Result(), "100 refused, 0 overlaps");
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Processes, ASignalWhileWaitingForTheLockFailsTheCall)
{
    OtherProcess holder([] { return BringUpThatLingers(60000); });
    OtherProcess waiting([] {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, nullptr);
        ualarm(100000, 0);
        uint8_t count = 0;
        const int result = ORBLINK_GetNumOfSwitches(&count);
        return std::to_string(result) + "\n" + Logs();
    });
    Init();
    holder.Start();
    ASSERT_TRUE(Eventually([] { return SemaphoreValue() == 0; }));
    EXPECT_EQ(waiting.Run(),
              "-1\nlog1 _System5SemOp:# semop() fail, errno=" + std::to_string(EINTR) +
                  "\nlog1 _ApiProlog:# _ApiGlobalLock() failed\n"
                  "log1 ORBLINK_GetNumOfSwitches:# _ApiProlog() failed\n");
    EXPECT_EQ(SemaphoreValue(), 0) << "still the holder's";
}

}  // namespace
