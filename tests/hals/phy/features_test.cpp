// EEE and raw registers by the general PHY HAL.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

using HalFeatures = HalTest;

PhyConfig EeePhy(PhyModes mode, bool partnerEee = true)
{
    return WithPartner(mode, true, partnerEee);
}

TEST_F(HalFeatures, EeeIsOfferedAtEverySpeedThatHasItAndTakenBack)
{
    for (bool clause45 : {true, false}) {
        PhyConfig config = EeePhy(kPhy1000Full);
        config.clause45 = clause45;
        MakeUp(config);
        EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
        EXPECT_EQ(Register(7, 60), 0x0006);
        EXPECT_EQ(Register(7, 62), 0x0001);
        EXPECT_EQ(hal_.SetEeeState(0, 0), 0);
        EXPECT_EQ(Register(7, 60), 0);
        EXPECT_EQ(Register(7, 62), 0);
    }
}

TEST_F(HalFeatures, EeeOffersOnlyWhatThePhyHas)
{
    struct Row {
        PhyModes eee;
        uint16_t slow;
        uint16_t fast;
    };
    for (Row row : {Row{kPhy100Full, 2, 0}, Row{kPhy1000Full, 4, 0}, Row{kPhy2500Full, 0, 1}}) {
        PhyConfig config;
        config.eee = row.eee;
        MakeUp(config);
        EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
        EXPECT_EQ(Register(7, 60), row.slow);
        EXPECT_EQ(Register(7, 62), row.fast);
    }
}

TEST_F(HalFeatures, AChangeOfEeeNegotiatesAnewAndNoChangeDoesNot)
{
    MakeUp();
    ASSERT_EQ(Link().up, 1U);
    EXPECT_EQ(hal_.SetEeeState(0, 0), 0);
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
    EXPECT_EQ(Link().up, 0U);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(hal_.SetEeeState(0, 255), 0);
    EXPECT_EQ(Link().up, 1U);
}

TEST_F(HalFeatures, EeeLeavesAForcedLinkAlone)
{
    PhyModel& phy = MakeUp(WithPartner(kPhy100Full, false));
    ASSERT_TRUE(phy.Write22(0, 0x2100));
    Wait(10ms);
    EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_100M, 1}));
}

TEST_F(HalFeatures, EeeOfAPhyWithoutItIsNotSupported)
{
    PhyConfig config;
    config.eee = 0;
    MakeUp(config);
    size_t before = Writes();
    EXPECT_EQ(hal_.SetEeeState(0, 1), ETHPHY_IEEE8023_NOT_SUPPORTED);
    EXPECT_EQ(hal_.SetEeeState(0, 0), ETHPHY_IEEE8023_NOT_SUPPORTED);
    EXPECT_EQ(Writes(), before);
    MakeUp(PlainPhy());
    EXPECT_EQ(hal_.SetEeeState(0, 1), ETHPHY_IEEE8023_NOT_SUPPORTED);
}

TEST_F(HalFeatures, EeeStateIsNegotiatedAtTheSpeedOfTheLink)
{
    constexpr uint32_t kSleeps = ETHPHY_IEEE8023_EEE_RX_SLEEPS | ETHPHY_IEEE8023_EEE_TX_SLEEPS;
    for (PhyMode mode : {kPhy100Full, kPhy1000Full, kPhy2500Full}) {
        MakeUp(EeePhy(mode));
        EXPECT_EQ(Counters().eeeState, 0U);
        ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
        Negotiate();
        EXPECT_EQ(Counters().eeeState,
                  ETHPHY_IEEE8023_EEE_OFFERED | ETHPHY_IEEE8023_EEE_NEGOTIATED | kSleeps);
    }
}

TEST_F(HalFeatures, EeeIsNotNegotiatedWithoutThePartnerOrAtAnotherSpeed)
{
    MakeUp(EeePhy(kPhy1000Full, false));
    ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Counters().eeeState, ETHPHY_IEEE8023_EEE_OFFERED);
    PhyConfig config = EeePhy(kPhyAllModes);
    config.eee = kPhy100Full;
    MakeUp(config);
    ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Counters().eeeState, ETHPHY_IEEE8023_EEE_OFFERED) << "the link has 2.5 Gb/s";
    MakeUp(EeePhy(kPhy100Half));
    ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Counters().eeeState, ETHPHY_IEEE8023_EEE_OFFERED) << "half duplex";
}

TEST_F(HalFeatures, ChipRegistersOfClause22)
{
    Make();
    uint16_t value = 0;
    EXPECT_EQ(hal_.ReadChipReg(0, 2, &value), 0);
    EXPECT_EQ(value, 0x0A5A);
    EXPECT_EQ(hal_.WriteChipReg(0, 9, 0x0200), 0);
    EXPECT_EQ(Register(9), 0x0200);
}

TEST_F(HalFeatures, ChipRegistersOfClause45ByBothWays)
{
    for (bool clause45 : {true, false}) {
        PhyConfig config;
        config.clause45 = clause45;
        Make(config);
        uint16_t value = 0;
        EXPECT_EQ(hal_.ReadChipReg(0, EPHAL_MDIO_CLAUSE45 | 31U << 16 | 0x0E23, &value), 0);
        EXPECT_EQ(value, 1);
        EXPECT_EQ(hal_.WriteChipReg(0, EPHAL_MDIO_CLAUSE45 | 7U << 16 | 60, 0x0002), 0);
        EXPECT_EQ(Register(7, 60), 0x0002);
    }
}

TEST_F(HalFeatures, ChipRegistersMayHoldAllOnes)
{
    PhyModel& phy = Make();
    phy.AddCounter(0, "wake_errors", 0xFFFF);
    uint16_t value = 0;
    EXPECT_EQ(hal_.ReadChipReg(0, EPHAL_MDIO_CLAUSE45 | 3U << 16 | 22, &value), 0);
    EXPECT_EQ(value, 0xFFFF);
}

TEST_F(HalFeatures, ChipRegistersThatCannotBe)
{
    Make();
    halWorld.accesses.clear();
    uint16_t value = 0x1234;
    for (uint32_t reg : {32U, 0x10000U, 0x80000000U, EPHAL_MDIO_CLAUSE45 | 0x200000U}) {
        EXPECT_EQ(hal_.ReadChipReg(0, reg, &value), ETHPHY_IEEE8023_FAILED) << reg;
        EXPECT_EQ(hal_.WriteChipReg(0, reg, 0), ETHPHY_IEEE8023_FAILED) << reg;
    }
    EXPECT_EQ(hal_.WriteChipReg(0, 4, 0x10000), ETHPHY_IEEE8023_FAILED);
    EXPECT_EQ(hal_.WriteChipReg(0, 4, -1), ETHPHY_IEEE8023_FAILED);
    EXPECT_EQ(hal_.ReadChipReg(0, 4, nullptr), ETHPHY_IEEE8023_FAILED);
    EXPECT_TRUE(halWorld.accesses.empty());
    EXPECT_EQ(value, 0x1234);
}

TEST_F(HalFeatures, Clause45OfAPhyWithoutItIsNotSupported)
{
    Make(PlainPhy());
    uint16_t value = 0;
    EXPECT_EQ(hal_.ReadChipReg(0, EPHAL_MDIO_CLAUSE45 | 7U << 16, &value),
              ETHPHY_IEEE8023_NOT_SUPPORTED);
    EXPECT_EQ(hal_.WriteChipReg(0, EPHAL_MDIO_CLAUSE45 | 7U << 16, 0),
              ETHPHY_IEEE8023_NOT_SUPPORTED);
}

}  // namespace
}  // namespace vboard
