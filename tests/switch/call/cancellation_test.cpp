// A thread is cancelled while it is inside a call.
#include <pthread.h>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

// The result of a bring-up in a thread that is cancelled at the first chance after it.
void* BringUpAndEnd(void* result)
{
    *static_cast<int*>(result) = ORBLINK_ResetDisable(0, 1, nullptr, 0);
    pthread_testcancel();
    return nullptr;
}

class Cancellation : public SwitchTest {
protected:
    void* Run(void* (*function)(void*))
    {
        pthread_t thread = 0;
        void* ended = nullptr;
        EXPECT_EQ(pthread_create(&thread, nullptr, function, &result), 0);
        EXPECT_EQ(pthread_join(thread, &ended), 0);
        return ended;
    }

    int result = -2;
};

TEST_F(Cancellation, WaitsUntilTheCallHasReleasedTheSemaphore)
{
    Init();
    bool slotEnded = false;
    platform.slots["ResetSwitch"] = [&](const SlotArgs&) {
        pthread_cancel(pthread_self());
        pthread_testcancel();
        slotEnded = true;
        return 0;
    };
    EXPECT_EQ(Run(BringUpAndEnd), PTHREAD_CANCELED);
    EXPECT_TRUE(slotEnded);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Record(0).config.state, OB_STATE_ENABLED);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Cancellation, WaitsUntilTheInitialisationHasReleasedTheSemaphore)
{
    platform.slots["Init"] = [](const SlotArgs&) {
        pthread_cancel(pthread_self());
        pthread_testcancel();
        return 0;
    };
    platform.mailbox.push_back(SwitchBoard::With({{}}).Message());
    const auto initialise = [](void* given) -> void* {
        *static_cast<int*>(given) = ORBLINK_InitOnce(1);
        pthread_testcancel();
        return nullptr;
    };
    EXPECT_EQ(Run(initialise), PTHREAD_CANCELED);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(Cancellation, IsLeftDisabledWhereTheCallerHasDisabledIt)
{
    Init();
    int before = -1;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 1), 0);
    int after = -1;
    pthread_setcancelstate(before, &after);
    EXPECT_EQ(before, PTHREAD_CANCEL_ENABLE);
    EXPECT_EQ(after, PTHREAD_CANCEL_DISABLE);
}

}  // namespace
