#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class LanPort : public EnabledSwitch {};

TEST_F(LanPort, TakesVids1And4094)
{
    config.lanPortVlan[2] = 5;
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 1), 0);
    EXPECT_EQ(config.lanPortVlan[2], 1);
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 4094), 0);
    EXPECT_EQ(config.lanPortVlan[2], 4094);
    EXPECT_HALS("hal0 SetLanPortVlan(0, 2, 1)", "hal0 SetLanPortVlan(0, 2, 4094)");
}

TEST_F(LanPort, RefusesVids0And4095AndKeepsTheStoredOne)
{
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 0), -1);
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 4095), -1);
    EXPECT_LOGS("log1 ORBLINK_SetLanPortVlan:# Invalid Vid=0, DevIdx=0",
                "log1 ORBLINK_SetLanPortVlan:# Invalid Vid=4095, DevIdx=0");
    EXPECT_HALS();
    EXPECT_EQ(config.lanPortVlan[2], 1);
}

TEST_F(LanPort, TakesTheLow16BitsOfAVid)
{
    config.lanPortVlan[2] = 5;
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 65537), 0);
    EXPECT_HALS("hal0 SetLanPortVlan(0, 2, 1)");
    EXPECT_EQ(config.lanPortVlan[2], 1);
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, 65536), -1);
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 2, -1), -1);
    EXPECT_EQ(config.lanPortVlan[2], 1);
}

TEST_F(LanPort, LooksAtThePortBeforeTheValue)
{
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 0, 0), -1);
    EXPECT_EQ(ORBLINK_SetLanPortPcp(0, 8, 9), -1);
    EXPECT_LOGS("log1 ORBLINK_SetLanPortVlan:# Invalid LanPortIdx=0, DevIdx=0",
                "log1 ORBLINK_SetLanPortPcp:# Invalid LanPortIdx=8, DevIdx=0");
}

TEST_F(LanPort, NeedsNoPhy)
{
    EXPECT_EQ(ORBLINK_SetLanPortVlan(0, 7, 9), 0);
    EXPECT_EQ(config.lanPortVlan[7], 9);
}

TEST_F(LanPort, TakesPcp7AndRefuses8)
{
    EXPECT_EQ(ORBLINK_SetLanPortPcp(0, 3, 7), 0);
    EXPECT_EQ(ORBLINK_SetLanPortPcp(0, 3, 8), -1);
    EXPECT_EQ(ORBLINK_SetLanPortPcp(0, 3, 255), -1);
    EXPECT_LOGS("log1 ORBLINK_SetLanPortPcp:# Invalid Pcp=8, DevIdx=0",
                "log1 ORBLINK_SetLanPortPcp:# Invalid Pcp=255, DevIdx=0");
    EXPECT_HALS("hal0 SetLanPortPcp(0, 3, 7)");
    EXPECT_EQ(config.lanPortPcp[3], 7);
}

TEST_F(LanPort, HandsAnyEgressTaggingToTheHal)
{
    EXPECT_EQ(ORBLINK_SetLanPortEgressTagging(0, 1, 0xFFFFFFFFU), 0);
    EXPECT_HALS("hal0 SetLanPortEgressTagging(0, 1, 4294967295)");
    EXPECT_EQ(config.egressTagging[1], 0xFFFFFFFFU);
}

TEST_F(LanPort, HandsAnyGroupToTheHal)
{
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 1, 0x80000001U, 1), 0);
    EXPECT_HALS("hal0 SetLanPortGroupId(0, 1, 2147483649)");
    EXPECT_EQ(config.groupId[1], static_cast<int32_t>(0x80000001U));
}

TEST_F(LanPort, APlainGroupWriteOnALockedPortSucceedsSilentlyAndChangesNothing)
{
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 0), 0);
    EXPECT_TRANSCRIPT("log9 ORBLINK_SetLanPortGroupId:# LanPortIdx=2, GroupId=7",
                      "sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)");
    EXPECT_EQ(config.groupId[2], -1);
    EXPECT_EQ(config.groupIdLock[2], 1U);
}

TEST_F(LanPort, AnyNonZeroGroupLockCountsAsLocked)
{
    config.groupIdLock[2] = 0x100;
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 0), 0);
    EXPECT_EQ(config.groupId[2], -1);
}

TEST_F(LanPort, APlainGroupWriteOnAnUnlockedPortIsMadeAndLeavesItUnlocked)
{
    config.groupIdLock[2] = 0;
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 0), 0);
    EXPECT_HALS("hal0 SetLanPortGroupId(0, 2, 7)");
    EXPECT_EQ(config.groupId[2], 7);
    EXPECT_EQ(config.groupIdLock[2], 0U);
}

TEST_F(LanPort, GroupLockState1LocksAndWrites)
{
    config.groupIdLock[2] = 0;
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 1), 0);
    EXPECT_EQ(config.groupId[2], 7);
    EXPECT_EQ(config.groupIdLock[2], 1U);
}

TEST_F(LanPort, GroupLockState2UnlocksAndWrites)
{
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 2), 0);
    EXPECT_EQ(config.groupId[2], 7);
    EXPECT_EQ(config.groupIdLock[2], 0U);
    EXPECT_EQ(config.groupIdLock[1], 1U);
    EXPECT_EQ(config.groupIdLock[3], 1U);
}

TEST_F(LanPort, GroupLockState3Fails)
{
    for (const uint32_t lockState : {3U, 0xFFFFFFFFU}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, lockState), -1);
        EXPECT_LOGS(
            "log1 ORBLINK_SetLanPortGroupId:# SetLanPortGroupId failed, LanPortIdx=2, "
            "GroupId=7, DevIdx=0 LockState=" +
            std::to_string(static_cast<int>(lockState)));
    }
    EXPECT_HALS();
    EXPECT_EQ(config.groupId[2], -1);
    EXPECT_EQ(config.groupIdLock[2], 1U);
}

TEST_F(LanPort, TheGroupLockChangesAlsoWhenTheGroupIsStoredAlready)
{
    config.groupId[2] = 7;
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 2), 0);
    EXPECT_EQ(config.groupIdLock[2], 0U);
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 1), 0);
    EXPECT_EQ(config.groupIdLock[2], 1U);
    EXPECT_HALS();
}

TEST_F(LanPort, TheGroupLockStaysChangedWhenTheHalFails)
{
    platform.FailSlot("SetLanPortGroupId");
    EXPECT_EQ(ORBLINK_SetLanPortGroupId(0, 2, 7, 2), -1);
    EXPECT_EQ(config.groupIdLock[2], 0U);
    EXPECT_EQ(config.groupId[2], -1);
}

}  // namespace
