// Bring-up, reset and administrative state by the general PHY HAL.
#include <algorithm>

#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

using HalReset = HalTest;

TEST_F(HalReset, ResetsThePhyAndWaitsForItsEnd)
{
    Make();
    auto start = halWorld.now;
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(halWorld.now - start, 20ms);
    HalAccess reset{true, -1, 0, 0x8000};
    EXPECT_EQ(std::ranges::count(halWorld.accesses, reset), 1);
}

TEST_F(HalReset, GivesUpOnAResetThatNeverEnds)
{
    PhyConfig config;
    config.softResetTime = 1h;
    Make(config);
    auto start = halWorld.now;
    EXPECT_EQ(hal_.ResetDisable(0, 1), ETHPHY_IEEE8023_FAILED);
    EXPECT_EQ(halWorld.now - start, 600ms);
    EXPECT_EQ(halWorld.accesses.back(), (HalAccess{false, -1, 0, 0}));
}

TEST_F(HalReset, TheStandardsHalfSecondIsEnough)
{
    PhyConfig config;
    config.softResetTime = 500ms;
    Make(config);
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
}

TEST_F(HalReset, ASignalDoesNotShortenTheWait)
{
    PhyConfig config;
    config.softResetTime = 500ms;
    Make(config);
    halWorld.interruptedWaits = 1000;
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(halWorld.interruptedWaits, 0U);
}

TEST_F(HalReset, APhyThatIsSilentWhileItResetsIsWaitedFor)
{
    Make();
    ASSERT_EQ(hal_.ResetDisable(0, 1), 0);
    size_t reset =
        static_cast<size_t>(std::ranges::find(halWorld.accesses, HalAccess{true, -1, 0, 0x8000}) -
                            halWorld.accesses.begin());
    Make();
    halWorld.accesses.clear();
    halWorld.failFrom = halWorld.failUntil = reset + 1;
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
}

TEST_F(HalReset, DefaultConfigurationOffersAllThatThePhyCan)
{
    PhyModel& phy = Make();
    ASSERT_TRUE(phy.Write22(4, 0x0021));
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_TRUE(phy.Write45(7, 32, 0x0000));
    ASSERT_TRUE(phy.Write22(0, 0x2100));
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(Register(0), 0x1000);
    EXPECT_EQ(Register(4), 0x01E1);
    EXPECT_EQ(Register(9), 0x0300);
    EXPECT_EQ(Register(7, 32), 0x0080);
}

TEST_F(HalReset, DefaultConfigurationOffersWhatResetLeavesOut)
{
    Make();
    // A PHY whose reset leaves it with little offered, pause on and as a manual master.
    halWorld.overrides = {{{-1, 4}, 0x0C21}, {{-1, 9}, 0x1800}, {{7, 32}, 0x4002}};
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(Register(4), 0x0DE1);
    EXPECT_EQ(Register(9), 0x1B00);
    EXPECT_EQ(Register(7, 32), 0x4082);
}

TEST_F(HalReset, DefaultConfigurationOffersEachModeOnlyWhereThePhyHasIt)
{
    struct Row {
        PhyModes modes;
        uint16_t page;
        uint16_t gigabit;
        uint16_t multiGig;
    };
    for (Row row : {Row{kPhy10Half | kPhy1000Half, 0x0021, 0x0100, 0},
                    Row{kPhy10Full | kPhy1000Full, 0x0041, 0x0200, 0},
                    Row{kPhy100Half | kPhy2500Full | kPhy1000Full, 0x0081, 0x0200, 0x0080}}) {
        PhyConfig config;
        config.modes = row.modes;
        config.eee = 0;
        Make(config);
        EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
        EXPECT_EQ(Register(4), row.page);
        EXPECT_EQ(Register(9), row.gigabit);
        EXPECT_EQ(Register(7, 32), row.multiGig);
    }
}

TEST_F(HalReset, DefaultConfigurationLeavesAPhyWithoutNegotiationAsItResets)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(Register(0), 0x2100);
}

TEST_F(HalReset, OtherConfigurationSurvivesTheReset)
{
    PhyModel& phy = Make();
    ASSERT_TRUE(phy.Write22(4, 0x0C61));
    ASSERT_TRUE(phy.Write22(9, 0x1A00));
    ASSERT_TRUE(phy.Write45(7, 32, 0x4002));
    ASSERT_TRUE(phy.Write45(7, 60, 0x0004));
    ASSERT_TRUE(phy.Write45(7, 62, 0x0001));
    ASSERT_TRUE(phy.Write22(0, 0x3A40));
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(0), 0x3040) << "but for the power-down";
    EXPECT_EQ(Register(4), 0x0C61);
    EXPECT_EQ(Register(9), 0x1A00);
    EXPECT_EQ(Register(7, 32), 0x4002);
    EXPECT_EQ(Register(7, 60), 0x0004);
    EXPECT_EQ(Register(7, 62), 0x0001);
}

TEST_F(HalReset, AForcedModeSurvivesTheReset)
{
    PhyModel& phy = Make(WithPartner(kPhy10Full, false));
    ASSERT_TRUE(phy.Write22(0, 0x0100));
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    Wait(10ms);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_10M, 1}));
}

TEST_F(HalReset, ConfigurationSurvivesTheResetLine)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_TRUE(phy.Write45(7, 60, 0x0006));
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(hal_.ResetEnable(0), 0);
    phy.SetResetLine(true);
    EXPECT_EQ(hal_.ResetEnable(0), ETHPHY_IEEE8023_FAILED) << "nobody answers";
    phy.SetResetLine(false);
    Wait(100ms);
    EXPECT_EQ(Register(9), 0x0300);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(0), 0x1000);
    EXPECT_EQ(Register(9), 0x0000);
    EXPECT_EQ(Register(7, 60), 0x0006);
}

TEST_F(HalReset, DefaultConfigurationForgetsWhatWasKept)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(Register(9), 0x0300);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0300);
}

TEST_F(HalReset, KeptConfigurationIsUsedOnce)
{
    PhyModel& phy = MakeUp();
    ASSERT_EQ(hal_.ResetEnable(0), 0);
    ASSERT_EQ(hal_.ResetDisable(0, 0), 0);
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0000);
}

TEST_F(HalReset, ABringUpThatFailedCanBeTriedAgain)
{
    PhyModel& phy = MakeUp();
    ASSERT_TRUE(phy.Write22(9, 0x0000));
    ASSERT_TRUE(phy.Write45(7, 32, 0x0000));
    halWorld.accesses.clear();
    ASSERT_EQ(hal_.ResetDisable(0, 0), 0);
    size_t all = halWorld.accesses.size();
    halWorld.accesses.clear();
    halWorld.failFrom = halWorld.failUntil = all - 1;
    EXPECT_NE(hal_.ResetDisable(0, 0), 0);
    halWorld.failFrom = SIZE_MAX;
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(9), 0x0000);
    EXPECT_EQ(Register(7, 32), 0x0000);
}

TEST_F(HalReset, BothConfigurationsNegotiateAnew)
{
    for (int defConfig : {0, 1}) {
        MakeUp();
        halWorld.accesses.clear();
        EXPECT_EQ(hal_.ResetDisable(0, defConfig), 0);
        EXPECT_EQ(halWorld.accesses.back(), (HalAccess{true, -1, 0, 0x1200}));
        EXPECT_EQ(Link(), kLinkDown);
        Negotiate();
        EXPECT_EQ(Link().up, 1U);
    }
}

TEST_F(HalReset, EnableHoldsThePhyInPowerDown)
{
    MakeUp();
    EXPECT_EQ(hal_.ResetEnable(0), 0);
    EXPECT_EQ(Register(0), 0x1800);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Register(0), 0x1000);
}

TEST_F(HalReset, AdminStateIsThePowerDownBitAlone)
{
    PhyModel& phy = Make();
    ASSERT_TRUE(phy.Write22(0, 0x3140));
    EXPECT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(Register(0), 0x3940);
    EXPECT_EQ(hal_.SetAdminState(0, 1), 0);
    EXPECT_EQ(Register(0), 0x3140);
}

TEST_F(HalReset, AnAdminStateThatHoldsIsNotWrittenAgain)
{
    Make();
    EXPECT_EQ(hal_.SetAdminState(0, 2), 0);
    EXPECT_EQ(Writes(), 0U);
    EXPECT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(Writes(), 1U);
}

TEST_F(HalReset, PowerUpNegotiatesAndLinks)
{
    MakeUp();
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    ASSERT_EQ(hal_.SetAdminState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
}

TEST_F(HalReset, InitNeedsItsPrivateData)
{
    EXPECT_NE(hal_.Init(nullptr), 0);
}

// Each access that fails costs a line of the log.
TEST_F(HalReset, ABusThatFailsDuringTheResetIsAskedAFewTimes)
{
    Make();
    ASSERT_EQ(hal_.ResetDisable(0, 1), 0);
    auto reset = std::ranges::find(halWorld.accesses, HalAccess{true, -1, 0, 0x8000});
    Make();
    halWorld.failFrom = static_cast<size_t>(reset - halWorld.accesses.begin()) + 1;
    halWorld.accesses.clear();
    auto start = halWorld.now;
    EXPECT_EQ(hal_.ResetDisable(0, 1), ETHPHY_IEEE8023_FAILED);
    EXPECT_EQ(halWorld.now - start, 600ms);
    EXPECT_LE(halWorld.accesses.size() - halWorld.failFrom, 6U);
}

}  // namespace
}  // namespace vboard
