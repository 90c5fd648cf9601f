// ETHPHY_GetLink and ETHPHY_SetAdminState.
#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

class PhyLink : public PhyTest {};

}  // namespace

TEST_F(PhyLink, ComesFromTheHal)
{
    InitEnabled();
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    platform.slots["GetLink"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint32_t*>(args[1]) = 1;
        *reinterpret_cast<uint32_t*>(args[2]) = 5;
        *reinterpret_cast<uint32_t*>(args[3]) = 7;
        return 0;
    };
    EXPECT_EQ(ETHPHY_GetLink(0, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 1U);
    EXPECT_EQ(speed, 5U);
    EXPECT_EQ(duplex, 7U);
}

TEST_F(PhyLink, OfAPhyHeldInResetIsDownWithoutTheHal)
{
    Init();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    uint32_t link = 1;
    uint32_t speed = 8;
    EXPECT_EQ(ETHPHY_GetLink(0, &link, &speed, nullptr), 0);
    EXPECT_EQ(link, 0U);
    EXPECT_EQ(speed, 8U);
    EXPECT_STEPS(kLock, kUnlock);
}

TEST_F(PhyLink, OfAPhyNeverResetComesFromTheHal)
{
    Init();
    uint32_t link = 1;
    EXPECT_EQ(ETHPHY_GetLink(0, &link, nullptr, nullptr), 0);
    EXPECT_STEPS(kLock, "hal0 GetLink(0, ptr, null, null)", kUnlock);
}

TEST_F(PhyLink, AdminStateIsStoredAndAppliedAndEnablesThePhy)
{
    Init();
    EXPECT_EQ(ETHPHY_SetAdminState(0, 0), 0);
    EXPECT_STEPS("phy9 ETHPHY_SetAdminState:# DevIndex=0 Enable=0", kLock,
                 "hal0 SetAdminState(0, 0)", kUnlock);
    EXPECT_EQ(Record().config.adminState, 0U);
    EXPECT_EQ(Record().config.hwState, 2U);
}

TEST_F(PhyLink, AdminStateOfAPhyHeldInResetIsOnlyStored)
{
    Init();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    EXPECT_EQ(ETHPHY_SetAdminState(0, -3), 0);
    EXPECT_STEPS("phy9 ETHPHY_SetAdminState:# DevIndex=0 Enable=-3", kLock, kUnlock);
    EXPECT_EQ(Record().config.adminState, 0xFFFFFFFD);
    EXPECT_EQ(Record().config.hwState, 1U);
}

TEST_F(PhyLink, AdminStateIsStoredEvenWhenTheHalFails)
{
    Init();
    platform.FailSlot("SetAdminState");
    EXPECT_EQ(ETHPHY_SetAdminState(0, 0), -1);
    EXPECT_EQ(transcript.Log().back(), "phy1 ETHPHY_SetAdminState:# failed Phy=0");
    EXPECT_EQ(Record().config.adminState, 0U);
    EXPECT_EQ(Record().config.hwState, 0U);
}
