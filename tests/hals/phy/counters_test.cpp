// What the general PHY HAL counts.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

using HalCounters = HalTest;

TEST_F(HalCounters, CountersAddUpWhatTheRegistersForget)
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
    EXPECT_EQ(counters.valid, 15U);
    EXPECT_EQ(counters.idleErrors, 300U);
    EXPECT_EQ(counters.highBer, 110U);
    EXPECT_EQ(counters.erroredBlocks, 290U);
    EXPECT_EQ(counters.eeeWakeErrors, 65565U);
}

TEST_F(HalCounters, ReadingTheLinkLosesNoErrors)
{
    PhyModel& phy = MakeUp();
    phy.AddCounter(0, "idle_errors", 7);
    ASSERT_EQ(Link().speed, uint32_t{OB_SPEED_1G});
    EXPECT_EQ(Counters().idleErrors, 7U);
}

TEST_F(HalCounters, ResetCountersStartsFromNothing)
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

TEST_F(HalCounters, CountersAreThoseThatThePhyHas)
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
        EXPECT_EQ(Counters().valid, row.valid | ETHPHY_IEEE8023_HAS_LINK_DROPS);
    }
}

TEST_F(HalCounters, EveryPhyCountsTheDropsOfItsLink)
{
    PhyModel& phy = MakeUp(PlainPhy());
    EXPECT_EQ(Link().up, 1U);
    phy.SetLink(0, false, 0, false);
    EthphyIeee8023Counters counters = Counters();
    EXPECT_EQ(counters.valid, ETHPHY_IEEE8023_HAS_LINK_DROPS);
    EXPECT_EQ(counters.linkDrops, 1U);
    EXPECT_EQ(hal_.ResetCounters(0), 0);
    EXPECT_EQ(Counters().linkDrops, 0U);
}

// The cable is pulled and plugged in again between two looks.
void Flap(PhyModel& phy)
{
    phy.SetLink(0, false, 0, false);
    phy.SetLink(0, true, 1, true);
    HalTest::Negotiate();
}

TEST_F(HalCounters, ALinkThatDroppedAndCameBackIsCountedWhoeverLooks)
{
    PhyModel& phy = MakeUp();
    uint32_t drops = 0;
    uint32_t caps = 0;
    uint16_t status = 0;
    EthphyIeee8023Counters counters;
    auto next = [&] {
        Flap(phy);
        return ++drops;
    };
    EXPECT_EQ(Link().up, 1U);
    next();
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(Counters().linkDrops, drops);
    next();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(Counters().linkDrops, drops);
    next();
    EXPECT_EQ(hal_.ReadChipReg(0, 1, &status), 0);
    EXPECT_EQ(Counters().linkDrops, drops);
    next();
    EXPECT_EQ(hal_.GetCounters(0, &counters), 0);
    EXPECT_EQ(counters.linkDrops, drops);
    next();
    EXPECT_EQ(hal_.GetCaps(0, &caps), 0);
    EXPECT_EQ(Counters().linkDrops, drops);
}

TEST_F(HalCounters, AnAbsentLinkIsOneDropAndItsReturnNone)
{
    PhyModel& phy = MakeUp();
    EXPECT_EQ(Link().up, 1U);
    phy.SetLink(0, false, 0, false);
    for (int look = 0; look < 3; ++look)
        EXPECT_EQ(Link().up, 0U);
    phy.SetLink(0, true, 1, true);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(Counters().linkDrops, 1U);
}

TEST_F(HalCounters, TheFirstLinkIsNoDrop)
{
    MakeUp();
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(Counters().linkDrops, 0U);
}

TEST_F(HalCounters, DropsThatAnOperationMakesAreNotCounted)
{
    MakeUp();
    EXPECT_EQ(Link().up, 1U);
    ASSERT_EQ(hal_.SetEeeState(0, 1), 0);
    EXPECT_EQ(Link().up, 0U);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
    ASSERT_EQ(hal_.SetAdminState(0, 0), 0);
    EXPECT_EQ(Link().up, 0U);
    ASSERT_EQ(hal_.SetAdminState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
    ASSERT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(Link().up, 0U);
    Negotiate();
    EXPECT_EQ(Counters().linkDrops, 0U);
}

TEST_F(HalCounters, MasterFaultsAreCountedWhoeverLooks)
{
    PhyModel& phy = MakeUp(WithPartner(kPhy1000Full));
    uint16_t status = 0;
    phy.AddCounter(0, "master_faults", 1);
    EXPECT_EQ(hal_.ReadChipReg(0, 10, &status), 0);
    phy.AddCounter(0, "master_faults", 1);
    EXPECT_EQ(Link().up, 1U);
    phy.AddCounter(0, "master_faults", 1);
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(Counters().masterFaults, 3U);
    EXPECT_EQ(hal_.ResetCounters(0), 0);
    EXPECT_EQ(Counters().masterFaults, 0U);
}

TEST_F(HalCounters, ChipRegistersThatReadingClearsAreCounted)
{
    PhyModel& phy = MakeUp();
    phy.AddCounter(0, "idle_errors", 3);
    phy.AddCounter(0, "wake_errors", 4);
    phy.AddCounter(0, "errored_blocks", 5);
    uint16_t value = 0;
    EXPECT_EQ(hal_.ReadChipReg(0, 10, &value), 0);
    EXPECT_EQ(hal_.ReadChipReg(0, EPHAL_MDIO_CLAUSE45 | 3U << 16 | 22, &value), 0);
    EXPECT_EQ(hal_.ReadChipReg(0, EPHAL_MDIO_CLAUSE45 | 3U << 16 | 33, &value), 0);
    auto counters = Counters();
    EXPECT_EQ(counters.idleErrors, 3U);
    EXPECT_EQ(counters.eeeWakeErrors, 4U);
    EXPECT_EQ(counters.erroredBlocks, 5U);
}

TEST_F(HalCounters, NobodyIsNotCounted)
{
    MakeUp();
    uint16_t value = 0;
    halWorld.accesses.clear();
    halWorld.silentFrom = 0;
    for (uint32_t reg :
         {1U, 10U, EPHAL_MDIO_CLAUSE45 | 3U << 16 | 22, EPHAL_MDIO_CLAUSE45 | 3U << 16 | 33})
        EXPECT_NE(hal_.ReadChipReg(0, reg, &value), 0);
    halWorld.silentFrom = SIZE_MAX;
    auto counters = Counters();
    EXPECT_EQ(counters.idleErrors + counters.highBer + counters.erroredBlocks +
                  counters.eeeWakeErrors + counters.linkDrops + counters.masterFaults,
              0U);
}

TEST_F(HalCounters, PollLeavesADisabledPhyAlone)
{
    MakeUp();
    halWorld.enabled = false;
    halWorld.accesses.clear();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_TRUE(halWorld.accesses.empty());
}

TEST_F(HalCounters, OtherProcessesSeeTheSameSums)
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

}  // namespace
}  // namespace vboard
