// Link, speed and duplex as the general PHY HAL reads them from the registers.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

constexpr PhyMode kModes[] = {kPhy10Half,   kPhy10Full,   kPhy100Half, kPhy100Full,
                              kPhy1000Half, kPhy1000Full, kPhy2500Full};
constexpr HalLink kLinks[] = {{1, OB_SPEED_10M, 0},  {1, OB_SPEED_10M, 1}, {1, OB_SPEED_100M, 0},
                              {1, OB_SPEED_100M, 1}, {1, OB_SPEED_1G, 0},  {1, OB_SPEED_1G, 1},
                              {1, OB_SPEED_2G5, 1}};

// Both ways to the MMDs.
class HalLinkTest : public HalTest, public testing::WithParamInterface<bool> {
protected:
    PhyConfig Config(PhyModes far, bool negotiates = true)
    {
        PhyConfig config = WithPartner(far, negotiates);
        config.clause45 = GetParam();
        return config;
    }
};
INSTANTIATE_TEST_SUITE_P(Ways, HalLinkTest, testing::Bool(),
                         [](const auto& way) { return way.param ? "Clause45" : "Indirect"; });

TEST_P(HalLinkTest, EveryModeThatBothEndsOffer)
{
    for (unsigned i = 0; i < std::size(kModes); ++i) {
        MakeUp(Config(kModes[i]));
        EXPECT_EQ(Link(), kLinks[i]) << i;
    }
}

TEST_P(HalLinkTest, TheBestOfWhatBothEndsOffer)
{
    for (unsigned near = 0; near < std::size(kModes); ++near)
        for (unsigned far = 0; far < std::size(kModes); ++far) {
            PhyConfig config = Config(static_cast<PhyModes>((2U << far) - 1));
            config.modes = static_cast<PhyModes>((2U << near) - 1);
            config.eee = 0;
            MakeUp(config);
            EXPECT_EQ(Link(), kLinks[std::min(near, far)]) << near << ' ' << far;
        }
}

TEST_P(HalLinkTest, ModesInCommonNeedNotBeTheBestOfEither)
{
    PhyConfig config = Config(kPhy10Full | kPhy1000Half | kPhy2500Full);
    config.modes = kPhy10Full | kPhy100Full | kPhy1000Full;
    config.eee = 0;
    MakeUp(config);
    EXPECT_EQ(Link(), kLinks[1]);
}

using HalLinkPlain = HalTest;

TEST_F(HalLinkPlain, AllModesOfAPhyWithoutMmds)
{
    for (unsigned i = 0; i < 4; ++i) {
        PhyConfig config = PlainPhy();
        config.partner = PartnerWith(kModes[i]);
        MakeUp(config);
        EXPECT_EQ(Link(), kLinks[i]);
    }
}

TEST_F(HalLinkPlain, NothingInCommonIsNoLink)
{
    PhyConfig config = WithPartner(kPhy2500Full);
    config.modes = kPhy1000Full;
    config.eee = 0;
    MakeUp(config);
    EXPECT_EQ(Link(), kLinkDown);
}

TEST_F(HalLinkPlain, NoPartnerIsNoLink)
{
    PhyConfig config;
    config.partner = NoPartner();
    MakeUp(config);
    EXPECT_EQ(Link(), kLinkDown);
}

TEST_F(HalLinkPlain, APartnerWithoutNegotiationIsHalfDuplex)
{
    struct Row {
        PhyMode partner;
        HalLink link;
    };
    for (Row row :
         {Row{kPhy10Half, kLinks[0]}, Row{kPhy10Full, kLinks[0]}, Row{kPhy100Half, kLinks[2]},
          Row{kPhy100Full, kLinks[2]}, Row{kPhy1000Full, kLinkDown}}) {
        MakeUp(WithPartner(row.partner, false));
        EXPECT_EQ(Link(), row.link) << row.partner;
    }
}

TEST_F(HalLinkPlain, APartnerWithoutNegotiationCountsWhateverIsAdvertised)
{
    PhyModel& phy = MakeUp(WithPartner(kPhy100Full, false));
    ASSERT_TRUE(phy.Write22(4, 0x0101));
    ASSERT_TRUE(phy.Write22(0, 0x1200));
    Negotiate();
    EXPECT_EQ(Link(), kLinks[2]);
}

TEST_F(HalLinkPlain, WithoutNegotiationTheControlRegisterDecides)
{
    struct Row {
        uint16_t control;
        PhyMode partner;
        HalLink link;
    };
    for (Row row : {Row{0x0000, kPhy10Half, kLinks[0]}, Row{0x0100, kPhy10Full, kLinks[1]},
                    Row{0x2000, kPhy100Half, kLinks[2]}, Row{0x2100, kPhy100Full, kLinks[3]},
                    Row{0x0040, kPhy1000Half, kLinks[4]}, Row{0x0140, kPhy1000Full, kLinks[5]},
                    Row{0x2100, kPhy10Full, kLinkDown}}) {
        PhyModel& phy = MakeUp(WithPartner(row.partner, false));
        ASSERT_TRUE(phy.Write22(0, row.control));
        Negotiate();
        EXPECT_EQ(Link(), row.link) << row.control;
    }
}

TEST_F(HalLinkPlain, APhyThatCannotNegotiateIsReadByItsControlRegister)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    config.partner = PartnerWith(kPhy100Full, false);
    MakeUp(config);
    EXPECT_EQ(Link(), kLinks[3]);
}

TEST_F(HalLinkPlain, TheReservedForcedSpeedIsUnknown)
{
    MakeUp();
    Link();
    halWorld.overrides[{-1, 0}] = 0x2140;
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_UNKNOWN, 1}));
}

TEST_F(HalLinkPlain, ALinkThatCameBackIsUpAtOnce)
{
    PhyModel& phy = MakeUp();
    EXPECT_EQ(Link().up, 1U);
    phy.SetLink(0, false, 1, true);
    phy.SetLink(0, true, 1, true);
    Negotiate();
    EXPECT_EQ(Link().up, 1U);
}

TEST_F(HalLinkPlain, ALinkThatWentIsDownAtOnce)
{
    PhyModel& phy = MakeUp();
    EXPECT_EQ(Link().up, 1U);
    phy.SetLink(0, false, 1, true);
    EXPECT_EQ(Link(), kLinkDown);
}

TEST_F(HalLinkPlain, PoweredDownItIsDown)
{
    MakeUp();
    EXPECT_EQ(hal_.SetAdminState(0, 0), 0);
    Negotiate();
    EXPECT_EQ(Link(), kLinkDown);
}

TEST_F(HalLinkPlain, LinkWithTheNegotiationNotDoneIsDown)
{
    MakeUp();
    halWorld.overrides[{-1, 1}] = 0x794D;
    EXPECT_EQ(Link(), kLinkDown);
}

TEST_F(HalLinkPlain, ASpeedThatNoCodeNamesIsUnknown)
{
    MakeUp();
    EXPECT_EQ(Link().speed, uint32_t{OB_SPEED_1G});
    halWorld.overrides[{1, 21}] = 0x0003;
    halWorld.overrides[{7, 32}] = 0x0180;
    halWorld.overrides[{7, 33}] = 0x0060;
    hal_.Init(halWorld.privateData);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_UNKNOWN, 1})) << "5 Gb/s";
}

TEST_F(HalLinkPlain, TenGigabitIsTheBestOfAll)
{
    MakeUp();
    halWorld.overrides[{1, 11}] = 0x41A4;
    halWorld.overrides[{1, 21}] = 0x0003;
    halWorld.overrides[{7, 32}] = 0x1180;
    halWorld.overrides[{7, 33}] = 0x0860;
    hal_.Init(halWorld.privateData);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_10G, 1}));
}

TEST_F(HalLinkPlain, T4OfBothEndsIs100HalfDuplex)
{
    MakeUp(PlainPhy());
    halWorld.overrides = {{{-1, 1}, 0xF86D}, {{-1, 4}, 0x0261}, {{-1, 5}, 0x4261}, {{-1, 6}, 1}};
    hal_.Init(halWorld.privateData);
    EXPECT_EQ(Link(), kLinks[2]);
}

TEST_F(HalLinkPlain, NothingIsGuessedFromTheBasePageOfAFibrePhy)
{
    MakeUp();
    // 1000BASE-X: full duplex in 4.5 and half duplex in 4.6, and no technology in 1.15 to 1.11.
    halWorld.overrides = {{{-1, 1}, 0x016D},  {{-1, 4}, 0x0060}, {{-1, 5}, 0x4060}, {{-1, 6}, 1},
                          {{-1, 15}, 0xC000}, {{7, 5}, 0},       {{-1, 14}, 0}};
    hal_.Init(halWorld.privateData);
    EXPECT_EQ(Link(), (HalLink{1, OB_SPEED_UNKNOWN, 0}));
}

TEST_F(HalLinkPlain, SpeedAndDuplexMayBeNull)
{
    MakeUp();
    uint32_t link = 99;
    EXPECT_EQ(hal_.GetLink(0, &link, nullptr, nullptr), 0);
    EXPECT_EQ(link, 1U);
    EXPECT_NE(hal_.GetLink(0, nullptr, nullptr, nullptr), 0);
}

TEST_F(HalLinkPlain, TwoPhysAreReadApart)
{
    MakeUp(WithPartner(kPhy100Full), 1);
    MakeUp(WithPartner(kPhy10Half), 0);
    EXPECT_EQ(Link(0), kLinks[0]);
    EXPECT_EQ(Link(1), kLinks[3]);
}

}  // namespace
}  // namespace vboard
