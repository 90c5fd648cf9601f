// Capabilities, EEE, counters and raw registers by the general PHY HAL.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

class HalFeatures : public HalTest {
protected:
    uint32_t Caps()
    {
        uint32_t caps = 0;
        EXPECT_EQ(hal_.GetCaps(0, &caps), 0);
        return caps;
    }
};

PhyConfig EeePhy(PhyModes mode, bool partnerEee = true)
{
    return WithPartner(mode, true, partnerEee);
}

TEST_F(HalFeatures, CapsOfAPhyThatCanEverything)
{
    Make();
    EXPECT_EQ(Caps(), 0x000B30EFU);
}

TEST_F(HalFeatures, CapsOfAPlainPhy)
{
    Make(PlainPhy());
    EXPECT_EQ(Caps(), 0x0000100FU);
}

TEST_F(HalFeatures, CapsShowEachModeForItself)
{
    struct Row {
        PhyModes mode;
        uint32_t cap;
    };
    for (Row row :
         {Row{kPhy10Half, ETHPHY_IEEE8023_10_HALF}, Row{kPhy10Full, ETHPHY_IEEE8023_10_FULL},
          Row{kPhy100Half, ETHPHY_IEEE8023_100_HALF}, Row{kPhy100Full, ETHPHY_IEEE8023_100_FULL},
          Row{kPhy1000Half, ETHPHY_IEEE8023_1000_HALF},
          Row{kPhy1000Full, ETHPHY_IEEE8023_1000_FULL},
          Row{kPhy2500Full, ETHPHY_IEEE8023_2500_FULL}}) {
        PhyConfig config;
        config.modes = row.mode;
        config.eee = 0;
        Make(config);
        EXPECT_EQ(Caps(), row.cap | ETHPHY_IEEE8023_NEGOTIATES | ETHPHY_IEEE8023_MMD_FRAMES);
    }
}

TEST_F(HalFeatures, CapsShowEachEeeModeForItself)
{
    struct Row {
        PhyModes mode;
        uint32_t cap;
    };
    for (Row row :
         {Row{kPhy100Full, ETHPHY_IEEE8023_EEE_100}, Row{kPhy1000Full, ETHPHY_IEEE8023_EEE_1000},
          Row{kPhy2500Full, ETHPHY_IEEE8023_EEE_2500}}) {
        PhyConfig config;
        config.eee = row.mode;
        Make(config);
        EXPECT_EQ(Caps() & 0x001F0000U, row.cap);
    }
}

TEST_F(HalFeatures, CapsSayWhichWayLeadsToTheMmds)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    EXPECT_EQ(Caps(), 0x000B50EFU);
}

TEST_F(HalFeatures, CapsOfAPhyWithoutNegotiation)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    EXPECT_EQ(Caps(), 0x0000000FU);
}

TEST_F(HalFeatures, CapsAreAskedAnewEachTime)
{
    Make();
    Caps();
    halWorld.overrides[{1, 21}] = 0x0002;
    EXPECT_EQ(Caps() & (ETHPHY_IEEE8023_2500_FULL | ETHPHY_IEEE8023_5000_FULL),
              ETHPHY_IEEE8023_5000_FULL);
}

TEST_F(HalFeatures, WhatFloatsOnTheBusIsNoCapability)
{
    Make();
    for (uint16_t junk : Words{0x0000, 0xFFFF, 0x0001, 0x7F00}) {
        halWorld.overrides = {{{7, 5}, junk}, {{-1, 14}, junk}};
        EXPECT_EQ(Caps() & 0xFFFFE000U, 0U) << junk;
    }
}

TEST_F(HalFeatures, AMissingMmdLacksItsAbilities)
{
    Make();
    halWorld.overrides[{7, 5}] = 0x0080;
    EXPECT_EQ(Caps(), 0x0000306FU);
    halWorld.overrides[{7, 5}] = 0x0082;
    EXPECT_EQ(Caps(), 0x000030EFU);
    halWorld.overrides[{7, 5}] = 0x0088;
    EXPECT_EQ(Caps(), 0x000B306FU);
}

TEST_F(HalFeatures, PmaAbilitiesCountOnlyWhereTheStandardSaysTheyExist)
{
    Make();
    halWorld.overrides[{1, 8}] = 0x8000;
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_2500_FULL, 0U);
    halWorld.overrides = {{{1, 11}, 0x01A0}};
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_2500_FULL, 0U);
    halWorld.overrides = {{{1, 11}, 0x0004}};
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_10000_FULL, ETHPHY_IEEE8023_10000_FULL);
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

TEST_F(HalFeatures, CountersAddUpWhatTheRegistersForget)
{
    PhyModel& phy = MakeUp();
    phy.AddCounter(0, "idle_errors", 200);
    phy.AddCounter(0, "ber", 60);
    phy.AddCounter(0, "errored_blocks", 250);
    phy.AddCounter(0, "wake_errors", 65535);
    EXPECT_EQ(hal_.Poll(0), 0);
    phy.AddCounter(0, "idle_errors", 100);
    phy.AddCounter(0, "ber", 50);
    phy.AddCounter(0, "errored_blocks", 40);
    phy.AddCounter(0, "wake_errors", 30);
    auto counters = Counters();
    EXPECT_EQ(counters.valid, 7U);
    EXPECT_EQ(counters.idleErrors, 300U);
    EXPECT_EQ(counters.highBer, 110U);
    EXPECT_EQ(counters.erroredBlocks, 290U);
    EXPECT_EQ(counters.eeeWakeErrors, 65565U);
}

TEST_F(HalFeatures, ReadingTheLinkLosesNoErrors)
{
    PhyModel& phy = MakeUp();
    phy.AddCounter(0, "idle_errors", 7);
    ASSERT_EQ(Link().speed, uint32_t{OB_SPEED_1G});
    EXPECT_EQ(Counters().idleErrors, 7U);
}

TEST_F(HalFeatures, ResetCountersStartsFromNothing)
{
    PhyModel& phy = MakeUp();
    phy.AddCounter(0, "idle_errors", 7);
    hal_.Poll(0);
    phy.AddCounter(0, "wake_errors", 3);
    phy.AddCounter(0, "ber", 3);
    phy.AddCounter(0, "errored_blocks", 3);
    EXPECT_EQ(hal_.ResetCounters(0), 0);
    auto counters = Counters();
    EXPECT_EQ(
        counters.idleErrors + counters.highBer + counters.erroredBlocks + counters.eeeWakeErrors,
        0U);
}

TEST_F(HalFeatures, CountersAreThoseThatThePhyHas)
{
    struct Row {
        PhyModes modes;
        PhyModes eee;
        uint32_t valid;
    };
    for (Row row : {Row{kPhy1000Full, 0, ETHPHY_IEEE8023_HAS_IDLE_ERRORS},
                    Row{kPhy2500Full, 0, ETHPHY_IEEE8023_HAS_BLOCK_ERRORS},
                    Row{kPhy100Full, kPhy100Full, ETHPHY_IEEE8023_HAS_EEE}}) {
        PhyConfig config;
        config.modes = row.modes;
        config.eee = row.eee;
        MakeUp(config);
        EXPECT_EQ(Counters().valid, row.valid);
    }
}

TEST_F(HalFeatures, CountersOfAPhyWithoutAnyAreNotSupported)
{
    MakeUp(PlainPhy());
    EthphyIeee8023Counters counters{99, 99, 99, 99, 99, 99};
    EXPECT_EQ(hal_.GetCounters(0, &counters), ETHPHY_IEEE8023_NOT_SUPPORTED);
    EXPECT_EQ(counters.valid, 99U) << "untouched";
    EXPECT_EQ(hal_.ResetCounters(0), ETHPHY_IEEE8023_NOT_SUPPORTED);
    EXPECT_EQ(hal_.Poll(0), 0);
}

TEST_F(HalFeatures, PollLeavesADisabledPhyAlone)
{
    MakeUp();
    halWorld.enabled = false;
    halWorld.accesses.clear();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_TRUE(halWorld.accesses.empty());
}

TEST_F(HalFeatures, OtherProcessesSeeTheSameSums)
{
    PhyModel& phy = MakeUp();
    const auto& other = LoadHal(kDefaultHal);
    ASSERT_NE(&other, &hal_);
    phy.AddCounter(0, "idle_errors", 5);
    ASSERT_EQ(other.Poll(0), 0);
    phy.AddCounter(0, "idle_errors", 6);
    EXPECT_EQ(Counters().idleErrors, 11U);
    ASSERT_EQ(other.ResetCounters(0), 0);
    EXPECT_EQ(Counters().idleErrors, 0U);
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
