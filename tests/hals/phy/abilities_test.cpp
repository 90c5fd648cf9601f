// What the general PHY HAL finds that a PHY can, and by which way.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

class HalAbilities : public HalTest {
protected:
    uint32_t Caps()
    {
        uint32_t caps = 0;
        EXPECT_EQ(hal_.GetCaps(0, &caps), 0);
        return caps;
    }
};

TEST_F(HalAbilities, CapsOfAPhyThatCanEverything)
{
    Make();
    EXPECT_EQ(Caps(), 0x000B30EFU);
}

TEST_F(HalAbilities, CapsOfAPlainPhy)
{
    Make(PlainPhy());
    EXPECT_EQ(Caps(), 0x0000100FU);
}

TEST_F(HalAbilities, CapsShowEachModeForItself)
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

TEST_F(HalAbilities, CapsShowEachEeeModeForItself)
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

TEST_F(HalAbilities, CapsSayWhichWayLeadsToTheMmds)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    EXPECT_EQ(Caps(), 0x000B50EFU);
}

TEST_F(HalAbilities, CapsOfAPhyWithoutNegotiation)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    EXPECT_EQ(Caps(), 0x0000000FU);
}

TEST_F(HalAbilities, CapsAreAskedAnewEachTime)
{
    Make();
    Caps();
    halWorld.overrides[{1, 21}] = 0x0002;
    EXPECT_EQ(Caps() & (ETHPHY_IEEE8023_2500_FULL | ETHPHY_IEEE8023_5000_FULL),
              ETHPHY_IEEE8023_5000_FULL);
}

TEST_F(HalAbilities, WhatFloatsOnTheBusIsNoCapability)
{
    Make();
    for (uint16_t junk : Words{0x0000, 0xFFFF, 0x0001, 0x7F00}) {
        halWorld.overrides = {{{7, 5}, junk}, {{3, 20}, junk}, {{-1, 14}, junk}};
        EXPECT_EQ(Caps() & 0xFFFFE000U, 0U) << junk;
    }
}

TEST_F(HalAbilities, AMissingMmdLacksItsAbilities)
{
    Make();
    halWorld.overrides[{7, 5}] = 0x0080;
    EXPECT_EQ(Caps(), 0x0000306FU);
    halWorld.overrides[{7, 5}] = 0x0082;
    EXPECT_EQ(Caps(), 0x000030EFU);
    halWorld.overrides[{7, 5}] = 0x0088;
    EXPECT_EQ(Caps(), 0x0003306FU);
}

TEST_F(HalAbilities, PmaAbilitiesCountOnlyWhereTheStandardSaysTheyExist)
{
    Make();
    halWorld.overrides[{1, 8}] = 0x8000;
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_2500_FULL, 0U);
    halWorld.overrides = {{{1, 11}, 0x01A0}};
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_2500_FULL, 0U);
    halWorld.overrides = {{{1, 11}, 0x0004}};
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_10000_FULL, ETHPHY_IEEE8023_10000_FULL);
}

TEST_F(HalAbilities, TheSecondEeeRegistersBelongToFastPhys)
{
    PhyConfig config = WithPartner(kPhy1000Full, true, true);
    config.modes = kPhyAllModes & ~kPhy2500Full;
    config.eee = kPhy100Full | kPhy1000Full;
    MakeUp(config);
    halWorld.overrides = {{{3, 21}, 0xFFFF}, {{7, 62}, 0xFFFF}, {{7, 63}, 0xFFFF}};
    halWorld.accesses.clear();
    EXPECT_EQ(Caps(), 0x0003306FU);
    EXPECT_EQ(hal_.ResetDisable(0, 0), 0);
    EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Counters().eeeState & ETHPHY_IEEE8023_EEE_NEGOTIATED, ETHPHY_IEEE8023_EEE_NEGOTIATED);
    EXPECT_FALSE(Touched(3, 21));
    EXPECT_FALSE(Touched(7, 62));
    EXPECT_FALSE(Touched(7, 63));
}

TEST_F(HalAbilities, AFastPhyWithoutFastEeeIsNotAskedWhatItOffers)
{
    PhyConfig config = WithPartner(kPhy2500Full);
    config.eee = kPhy100Full | kPhy1000Full;
    MakeUp(config);
    halWorld.overrides = {{{3, 21}, 0xFFFF}, {{7, 62}, 0xFFFF}, {{7, 63}, 0xFFFF}};
    EXPECT_EQ(Caps(), 0x000330EFU);
    EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
    EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
    Negotiate();
    EXPECT_EQ(Counters().eeeState, ETHPHY_IEEE8023_EEE_OFFERED);
    EXPECT_EQ(Link().speed, uint32_t{OB_SPEED_2G5});
}

TEST_F(HalAbilities, AllOnesInAnAbilityRegisterIsNone)
{
    struct Row {
        int mmd;
        uint16_t reg;
        uint32_t lost;
    };
    constexpr uint32_t kAll = 0x000B30EF;
    constexpr uint32_t kFast = ETHPHY_IEEE8023_2500_FULL | ETHPHY_IEEE8023_EEE_2500;
    for (bool clause45 : {true, false})
        for (Row row :
             {Row{3, 21, ETHPHY_IEEE8023_EEE_2500}, Row{1, 21, kFast}, Row{1, 11, kFast},
              Row{1, 8, kFast}, Row{3, 20, ETHPHY_IEEE8023_EEE_100 | ETHPHY_IEEE8023_EEE_1000}}) {
            PhyConfig config;
            config.clause45 = clause45;
            Make(config);
            halWorld.missing = {row.mmd, row.reg};
            uint32_t ways = ETHPHY_IEEE8023_MMD_FRAMES | ETHPHY_IEEE8023_MMD_INDIRECT;
            EXPECT_EQ(Caps() & ~ways, kAll & ~ways & ~row.lost) << row.mmd << '.' << row.reg;
            EXPECT_EQ(hal_.ResetDisable(0, 1), 0);
            Negotiate();
            EXPECT_EQ(Link().up, 1U);
            EXPECT_EQ(hal_.Poll(0), 0);
            Counters();
        }
}

TEST_F(HalAbilities, EeeIsFoundThoughNoMmdIsListed)
{
    for (bool clause45 : {true, false}) {
        PhyConfig config = WithPartner(kPhy1000Full, true, true);
        config.clause45 = clause45;
        Make(config);
        halWorld.missing = {7, 5};
        halWorld.missingReads = 0;
        ASSERT_EQ(hal_.ResetDisable(0, 1), 0);
        uint32_t way = clause45 ? ETHPHY_IEEE8023_MMD_FRAMES : ETHPHY_IEEE8023_MMD_INDIRECT;
        EXPECT_EQ(Caps(), 0x000B00EFU | ETHPHY_IEEE8023_NEGOTIATES | way);
        EXPECT_EQ(hal_.SetEeeState(0, 1), 0);
        EXPECT_EQ(Register(7, 60), 0x0006);
        Negotiate();
        EXPECT_NE(Counters().eeeState & ETHPHY_IEEE8023_EEE_NEGOTIATED, 0U);
    }
}

TEST_F(HalAbilities, RegistersThatHoldWhatIsWrittenAreNoMmds)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    halWorld.dataRegisterEchoes = true;
    EXPECT_EQ(Caps() & 0xFFFFE000U, 0U);
}

TEST_F(HalAbilities, RegistersThatAlwaysHoldTheSameAreNoMmds)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    for (uint16_t junk : Words{0x0006, 0x0014, 0x000E}) {
        halWorld.overrides[{-1, 14}] = junk;
        EXPECT_EQ(Caps() & 0xFFFFE000U, 0U) << junk;
    }
}

TEST_F(HalAbilities, AProbeThatFailedIsNotRemembered)
{
    PhyConfig config = WithPartner(kPhy1000Full | kPhy2500Full);
    config.indirect = false;
    MakeUp(config);
    halWorld.accesses.clear();
    Caps();
    auto probe = std::ranges::find(halWorld.accesses, HalAccess{false, 7, 5, 0});
    ASSERT_NE(probe, halWorld.accesses.end());
    halWorld.failFrom = halWorld.failUntil = static_cast<size_t>(probe - halWorld.accesses.begin());
    halWorld.accesses.clear();
    EXPECT_EQ(Caps() & ETHPHY_IEEE8023_2500_FULL, 0U);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_2G5, 1}));
    EXPECT_NE(Counters().valid & ETHPHY_IEEE8023_HAS_BLOCK_ERRORS, 0U);
}

TEST_F(HalAbilities, ABusWithoutClause45FramesIsAskedOnce)
{
    MakeUp();
    halWorld.clause45Fails = true;
    EXPECT_EQ(Caps(), 0x000B50EFU);
    halWorld.accesses.clear();
    EXPECT_EQ(Link().up, 1U);
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_FALSE(Touched(7, 5));
}

TEST_F(HalAbilities, ABusHeldLowIsNoPhy)
{
    Make();
    size_t before = Writes();
    uint32_t caps = 0;
    for (bool all : {false, true}) {
        halWorld.overrides = {{{-1, 2}, 0}, {{-1, 3}, 0}};
        for (uint16_t reg = 0; all && reg < 32; ++reg)
            halWorld.overrides[{-1, reg}] = 0;
        EXPECT_EQ(hal_.GetCaps(0, &caps), ETHPHY_IEEE8023_FAILED);
        EXPECT_EQ(hal_.ResetDisable(0, 1), ETHPHY_IEEE8023_FAILED);
        EXPECT_EQ(hal_.Poll(0), ETHPHY_IEEE8023_FAILED);
    }
    EXPECT_EQ(Writes(), before);
}

TEST_F(HalAbilities, OneIdentifierMayBeZero)
{
    Make();
    for (uint16_t reg : Words{2, 3}) {
        halWorld.overrides = {{{-1, reg}, 0}};
        EXPECT_EQ(Caps(), 0x000B30EFU);
    }
}

}  // namespace
}  // namespace vboard
