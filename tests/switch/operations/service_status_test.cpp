#include <cstring>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

class ServiceStatus : public SwitchTest {};

TEST_F(ServiceStatus, IsStoredAndReadBack)
{
    Init(SwitchBoard::With({{}, {}}));
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(1, 0xFFFFFFFF), 0);
    EXPECT_TRANSCRIPT(
        "log9 ORBLINK_SetOrbLinkServiceStatus:# ORBLINK_SetOrbLinkServiceStatus: "
        "Received event Signal = -1",
        "sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)");
    EXPECT_EQ(Record(1).serviceStatus, 0xFFFFFFFFU);
    EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(1), 0xFFFFFFFFU);
    EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(0), 0U);
    EXPECT_HALS();
}

TEST_F(ServiceStatus, IsLoggedBeforeTheLockIsTaken)
{
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 3), -1);
    EXPECT_EQ(transcript.All().front(),
              "log9 ORBLINK_SetOrbLinkServiceStatus:# ORBLINK_SetOrbLinkServiceStatus: Received "
              "event Signal = 3");
}

TEST_F(ServiceStatus, IsZeroOnAnyFailureWhateverIsStored)
{
    Init();
    Record(1).serviceStatus = 9;
    EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(1), 0U);
    EXPECT_LOGS("log1 ORBLINK_IsOrbLinkServiceOn:# Invalid device index, DevIdx=1");
    Record(0).serviceStatus = 9;
    platform.Fail("semop", 43);
    EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(0), 0U);
}

TEST_F(ServiceStatus, CountsInEveryStateAndSurvivesAReset)
{
    Init();
    for (uint32_t state : {0U, 1U, 2U}) {
        Record(0).config.state = state;
        EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, state + 10), 0);
        EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(0), state + 10);
    }
    ASSERT_EQ(ORBLINK_ResetEnable(0), 0);
    ASSERT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(0), 12U);
}

}  // namespace
