// Which registers the general PHY HAL gives back after a reset, and when it reads them.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

using HalSettings = HalTest;

constexpr uint32_t kEeeOffer = EPHAL_MDIO_CLAUSE45 | 7U << 16 | 60;

// The reset line takes all settings with it.
void PulseResetLine(PhyModel& phy)
{
    phy.SetResetLine(true);
    phy.SetResetLine(false);
    HalTest::Wait(100ms);
}

TEST_F(HalSettings, AreKeptBeforeThePowerDown)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_TRUE(phy.Write22(9, 0x0300)) << "a PHY may lose its registers in power-down";
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    PulseResetLine(phy);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0000);
}

TEST_F(HalSettings, AreKeptBeforeThePowerDownForABringUpWithoutResetEnable)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_TRUE(phy.Write22(9, 0x0300));
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0000);
}

TEST_F(HalSettings, OfAPhyThatWasEnabledAgainAreItsOwn)
{
    PhyModel& phy = MakeUp();
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_EQ(hal_.SetAdminState(0, 1), 0);
    ASSERT_TRUE(phy.Write22(9, 0x0200));
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0200);
}

TEST_F(HalSettings, OfAPhyThatWasPoweredUpBesideTheHalAreItsOwn)
{
    for (bool resetEnable : {false, true}) {
        PhyModel& phy = MakeUp();
        ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
        ASSERT_TRUE(phy.Write22(0, 0x1000));
        ASSERT_TRUE(phy.Write22(9, 0x0200));
        if (resetEnable) {
            ASSERT_EQ(hal_.ResetEnable(0), 0);
        }
        EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
        EXPECT_EQ(Register(9), 0x0200);
    }
}

TEST_F(HalSettings, MadeDuringPowerDownAreKeptToo)
{
    PhyModel& phy = MakeUp();
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
    ASSERT_EQ(hal_.WriteChipReg(0, 9, 0x0200), 0);
    ASSERT_EQ(hal_.WriteChipReg(0, 4, 0x0061), 0);
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    PulseResetLine(phy);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0200);
    EXPECT_EQ(Register(4), 0x0061);
    EXPECT_EQ(Register(7, 60), 0x0006);
    EXPECT_EQ(Register(7, 62), 0x0001);
}

TEST_F(HalSettings, MadeOfALivePhyAreReadFromIt)
{
    MakeUp();
    ASSERT_EQ(hal_.WriteChipReg(0, 9, 0x0200), 0);
    ASSERT_EQ(hal_.WriteChipReg(0, kEeeOffer, 0x0002), 0);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0200);
    EXPECT_EQ(Register(7, 60), 0x0002);
}

TEST_F(HalSettings, OfABringUpThatFailedOutliveAPowerDown)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    PulseResetLine(phy);
    halWorld.accesses.clear();
    ASSERT_EQ(hal_.ResetDisable(0, 1), 0);
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    PulseResetLine(phy);
    halWorld.clause45Fails = true;
    halWorld.accesses.clear();
    halWorld.failFrom = 0;
    EXPECT_NE(hal_.ResetDisable(0, 0), 0);
    halWorld.failFrom = SIZE_MAX;
    halWorld.clause45Fails = false;
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0000);
}

TEST_F(HalSettings, TestModesAreNone)
{
    Make();
    for (int defConfig : {0, 1}) {
        halWorld.overrides[{-1, 9}] = 0x7B00;
        halWorld.accesses.clear();
        EXPECT_EQ(hal_.ResetDisable(0, defConfig), 0);
        EXPECT_EQ(Register(9), 0x1B00);
        for (const HalAccess& access : halWorld.accesses)
            EXPECT_FALSE(access.write && access.mmd < 0 && access.reg == 9 &&
                         (access.value & 0xE000) != 0);
    }
}

TEST_F(HalSettings, IsolationIsNone)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    config.softResetTime = 5ms;
    Make(config);
    // This PHY comes out of its reset isolated.
    halWorld.overrides[{-1, 0}] = 0x2500;
    for (int defConfig : {0, 1}) {
        halWorld.accesses.clear();
        EXPECT_EQ(hal_.ResetDisable(0, defConfig), 0);
        EXPECT_EQ(halWorld.accesses.back(), (HalAccess{true, -1, 0, 0x2100}));
    }
}

TEST_F(HalSettings, EnablingClearsIsolation)
{
    PhyModel& phy = Make();
    for (uint16_t control : Words{0x1400, 0x1C00}) {
        ASSERT_TRUE(phy.Write22(0, control));
        EXPECT_EQ(hal_.SetAdminState(0, 1), 0);
        EXPECT_EQ(Register(0), 0x1000);
    }
}

}  // namespace
}  // namespace vboard
