// A thread that is cancelled in the middle of a call finishes the call first.
#include <pthread.h>
#include <unistd.h>

#include <atomic>

#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

struct Cancelled {
    int (*call)();
    std::atomic<bool> inSlot = false;
    std::atomic<int> result = -99;
};

Cancelled* cancelled;

// Waits where a cancellation would take effect.
int LingerInSlot(const SlotArgs&)
{
    cancelled->inSlot = true;
    usleep(50000);
    return 0;
}

void* CallAndEnd(void* argument)
{
    auto* work = static_cast<Cancelled*>(argument);
    work->result = work->call();
    pthread_testcancel();
    return nullptr;
}

// Cancels the thread while it is in a HAL slot; true when the cancellation came into effect.
bool CancelInSlot(Cancelled& work)
{
    cancelled = &work;
    pthread_t thread = 0;
    EXPECT_EQ(pthread_create(&thread, nullptr, CallAndEnd, &work), 0);
    for (int i = 0; i < 10000 && !work.inSlot; ++i)
        usleep(1000);
    EXPECT_TRUE(work.inSlot);
    EXPECT_EQ(pthread_cancel(thread), 0);
    void* end = nullptr;
    EXPECT_EQ(pthread_join(thread, &end), 0);
    return end == PTHREAD_CANCELED;
}

class CancelledThread : public testing::Test {
protected:
    CancelledThread()
    {
        InitialiseElsewhere();
        uint8_t count = 0;
        ORBLINK_GetNumOfSwitches(&count);
        ETHPHY_GetNumOfPhys(&count);
    }
};

TEST_F(CancelledThread, FinishesABringUpAndReleasesTheLock)
{
    Platform().slots["ResetSwitch"] = LingerInSlot;
    Record(0).config.state = OB_STATE_RESET;
    Cancelled work{[] { return ORBLINK_ResetDisable(0, 1, nullptr, 0); }};
    EXPECT_TRUE(CancelInSlot(work));
    EXPECT_EQ(work.result, 0);
    EXPECT_EQ(Record(0).config.state, OB_STATE_ENABLED);
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
}

TEST_F(CancelledThread, FinishesAPhyCallAndReleasesTheLock)
{
    Platform().slots["SetAdminState"] = LingerInSlot;
    Cancelled work{[] { return ETHPHY_SetAdminState(0, 0); }};
    EXPECT_TRUE(CancelInSlot(work));
    EXPECT_EQ(work.result, 0);
    EXPECT_EQ(LockValue(Family::kPhy), 1);
}

// Threads that were cancelled before they called: each operation ends with its lock released,
// whether it was begun or not.
TEST_F(CancelledThread, LeavesNoLockWhateverItCalls)
{
    for (const ExportedCall& call : ExportedCalls()) {
        Cancelled work{call.run};
        pthread_t thread = 0;
        ASSERT_EQ(pthread_create(
                      &thread, nullptr,
                      [](void* argument) -> void* {
                          pthread_cancel(pthread_self());
                          return CallAndEnd(argument);
                      },
                      &work),
                  0);
        void* end = nullptr;
        ASSERT_EQ(pthread_join(thread, &end), 0);
        EXPECT_EQ(end, PTHREAD_CANCELED);
        ASSERT_EQ(LockValue(Family::kSwitch), 1) << call.name;
        ASSERT_EQ(LockValue(Family::kPhy), 1) << call.name;
    }
}

}  // namespace
