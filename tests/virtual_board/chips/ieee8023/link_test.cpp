// Negotiation, reset and time of the PHY model.
#include <nlohmann/json.hpp>

#include "tests/virtual_board/chips/ieee8023/model_fixture.h"

namespace vboard {
namespace {

constexpr PhyMode kModes[] = {kPhy10Half,   kPhy10Full,   kPhy100Half, kPhy100Full,
                              kPhy1000Half, kPhy1000Full, kPhy2500Full};

class PhyLink : public ModelTest {
protected:
    nlohmann::json Link() { return phy_->State().at("link"); }
    unsigned Megabits() { return Link().at("megabits").get<unsigned>(); }
    bool FullDuplex() { return Link().at("fullDuplex").get<bool>(); }
};

TEST_F(PhyLink, TakesTheNegotiationTime)
{
    Make();
    Wait(1499ms);
    EXPECT_FALSE(LinkUp());
    Wait(1ms);
    EXPECT_TRUE(LinkUp());
}

TEST_F(PhyLink, IsTheFastestModeOfBothEnds)
{
    for (unsigned near = 0; near < std::size(kModes); ++near)
        for (unsigned far = 0; far < std::size(kModes); ++far) {
            auto upTo = [](unsigned index) { return static_cast<PhyModes>((2U << index) - 1); };
            PhyConfig config = WithPartner(upTo(far));
            config.modes = upTo(near);
            config.eee = 0;
            MakeSettled(config);
            PhyMode expected = kModes[std::min(near, far)];
            EXPECT_EQ(Megabits(), MegabitsOf(expected)) << near << ' ' << far;
            EXPECT_EQ(FullDuplex(), IsFullDuplex(expected)) << near << ' ' << far;
        }
}

TEST_F(PhyLink, NeedsAModeInCommon)
{
    for (PhyMode mode : kModes) {
        MakeSettled(WithPartner(kPhyAllModes & ~mode));
        ASSERT_TRUE(Write(4, static_cast<uint16_t>(1 | (mode & 0x0F) << 5)));
        ASSERT_TRUE(Write(9, static_cast<uint16_t>((mode & kPhyGigabit) << 4)));
        ASSERT_TRUE(Write(7, 32, mode == kPhy2500Full ? 0x0080 : 0));
        Write(0, 0x1200);
        Wait(10s);
        EXPECT_FALSE(LinkUp()) << mode;
        EXPECT_EQ(Read(6) & 1, 1) << "the pages were exchanged all the same";
        EXPECT_EQ(Read(1) & 0x0020, 0);
    }
}

TEST_F(PhyLink, NeedsAPartner)
{
    PhyConfig config;
    config.partner = NoPartner();
    MakeSettled(config);
    Wait(1h);
    EXPECT_FALSE(LinkUp());
    EXPECT_EQ(Read(5), 0);
    EXPECT_TRUE(phy_->SetLink(0, true, 1, true));
    Wait(1500ms);
    EXPECT_EQ(Megabits(), 1000U);
}

TEST_F(PhyLink, AdvertisementCountsFromTheNextRestart)
{
    MakeSettled();
    Write(9, 0);
    Write(7, 32, 0);
    Wait(10s);
    EXPECT_EQ(Megabits(), 1000U);
    Write(0, 0x1200);
    EXPECT_FALSE(LinkUp());
    Wait(1500ms);
    EXPECT_EQ(Megabits(), 100U);
}

TEST_F(PhyLink, ParallelDetectionIsHalfDuplex)
{
    for (PhyModes mode : {kPhy10Half, kPhy10Full, kPhy100Half, kPhy100Full}) {
        MakeSettled(WithPartner(mode, false));
        EXPECT_EQ(Megabits(), MegabitsOf(PhyMode{mode}));
        EXPECT_FALSE(FullDuplex());
        EXPECT_TRUE(Link().at("parallelDetection").get<bool>());
        EXPECT_EQ(*phy_->Peek22(1) & 0x0020, 0x0020);
    }
}

TEST_F(PhyLink, ParallelDetectionFindsNoGigabit)
{
    for (PhyModes mode : {kPhy1000Full, kPhy2500Full}) {
        MakeSettled(WithPartner(mode, false));
        Wait(10s);
        EXPECT_FALSE(LinkUp());
    }
}

TEST_F(PhyLink, ParallelDetectionNeedsTheHalfDuplexAbility)
{
    PhyConfig config = WithPartner(kPhy100Half, false);
    config.modes = kPhy100Full;
    config.eee = 0;
    MakeSettled(config);
    EXPECT_FALSE(LinkUp());
}

TEST_F(PhyLink, ForcedEndsMeetAtTheSameSpeed)
{
    struct Row {
        uint16_t control;
        PhyMode mode;
    };
    for (Row near :
         {Row{0x0000, kPhy10Half}, Row{0x0100, kPhy10Full}, Row{0x2000, kPhy100Half},
          Row{0x2100, kPhy100Full}, Row{0x0040, kPhy1000Half}, Row{0x0140, kPhy1000Full}})
        for (PhyMode far : kModes) {
            Make(WithPartner(far, false));
            ASSERT_TRUE(Write(0, near.control));
            Wait(10ms);
            EXPECT_EQ(LinkUp(), MegabitsOf(near.mode) == MegabitsOf(far));
            if (LinkUp()) {
                EXPECT_EQ(Megabits(), MegabitsOf(near.mode));
                EXPECT_EQ(FullDuplex(), IsFullDuplex(near.mode)) << "as forced, mismatch or not";
                EXPECT_EQ(Read(5), 0);
            }
        }
}

TEST_F(PhyLink, AForcedEndIsDetectedByANegotiatingPartner)
{
    Make();
    ASSERT_TRUE(Write(0, 0x2100));
    Wait(10ms);
    EXPECT_EQ(Megabits(), 100U);
    EXPECT_EQ(Read(1) & 0x0020, 0) << "nothing was negotiated";
    ASSERT_TRUE(Write(0, 0x0140));
    Wait(10s);
    EXPECT_FALSE(LinkUp()) << "gigabit is not detected";
}

TEST_F(PhyLink, RestartWithNegotiationOffChangesNothing)
{
    Make();
    ASSERT_TRUE(Write(0, 0x2100));
    Wait(10ms);
    ASSERT_TRUE(Write(0, 0x2300));
    EXPECT_TRUE(LinkUp());
    EXPECT_EQ(Read(0), 0x2100);
}

TEST_F(PhyLink, CableAtOneSpeedNegotiatesThatSpeed)
{
    struct Row {
        unsigned code;
        bool full;
        unsigned megabits;
    };
    Make();
    for (Row row : {Row{2, false, 10}, Row{2, true, 10}, Row{3, false, 100}, Row{3, true, 100},
                    Row{4, false, 1000}, Row{4, true, 1000}, Row{5, true, 2500}}) {
        EXPECT_TRUE(phy_->SetLink(0, true, row.code, row.full));
        Wait(1500ms);
        EXPECT_EQ(Megabits(), row.megabits);
        EXPECT_EQ(FullDuplex(), row.full);
    }
    EXPECT_TRUE(phy_->SetLink(0, true, 1, true));
    Wait(1500ms);
    EXPECT_EQ(Megabits(), 1000U) << "as configured again";
}

TEST_F(PhyLink, CableRefusesWhatThereIsNot)
{
    MakeSettled(PlainPhy());
    EXPECT_FALSE(phy_->SetLink(1, true, 1, true));
    EXPECT_FALSE(phy_->SetLink(0, true, 4, true));
    EXPECT_FALSE(phy_->SetLink(0, true, 0, true));
    EXPECT_FALSE(phy_->SetLink(0, true, 5, false));
    EXPECT_FALSE(phy_->SetLink(0, true, 6, true));
    EXPECT_TRUE(LinkUp());
    EXPECT_TRUE(phy_->SetLink(0, false, 0, false));
    EXPECT_FALSE(LinkUp());
}

TEST_F(PhyLink, PowerDownDropsItAndPowerUpNegotiatesAnew)
{
    MakeSettled();
    ASSERT_TRUE(Write(0, 0x1800));
    EXPECT_FALSE(LinkUp());
    Wait(10s);
    EXPECT_FALSE(LinkUp());
    EXPECT_EQ(Read(2), 0x0A5A) << "registers answer";
    ASSERT_TRUE(Write(0, 0x1000));
    EXPECT_FALSE(LinkUp());
    Wait(1500ms);
    EXPECT_TRUE(LinkUp());
}

TEST_F(PhyLink, NothingDrivesTheBusWhileTheResetLineIsHeld)
{
    MakeSettled();
    Write(4, 0x0061);
    phy_->SetResetLine(true);
    EXPECT_EQ(Read(0), 0xFFFF);
    EXPECT_EQ(Read(14), 0xFFFF);
    EXPECT_EQ(Read(7, 5), 0xFFFF);
    EXPECT_FALSE(Write(0, 0x1000));
    EXPECT_EQ(phy_->Complaint(), "written while the PHY is held in reset");
    EXPECT_FALSE(Write(7, 60, 0));
    Wait(10s);
    phy_->SetResetLine(false);
    Wait(49ms);
    EXPECT_EQ(Read(2), 0xFFFF);
    Wait(1ms);
    EXPECT_EQ(Read(2), 0x0A5A);
    EXPECT_EQ(Read(4), 0x01E1) << "reset";
    EXPECT_FALSE(LinkUp());
    Wait(1500ms);
    EXPECT_TRUE(LinkUp());
}

TEST_F(PhyLink, SettingTheResetLineAgainChangesNothing)
{
    MakeSettled();
    Read(1);
    phy_->SetResetLine(false);
    EXPECT_EQ(Read(1) & 0x0004, 0x0004);
}

TEST_F(PhyLink, SoftwareResetEndsByItselfAndRestoresTheDefaults)
{
    MakeSettled();
    Write(4, 0x0061);
    Write(9, 0x0000);
    Write(7, 60, 0x0006);
    ASSERT_TRUE(Write(0, 0x8000));
    EXPECT_EQ(Read(0) & 0x8000, 0x8000);
    EXPECT_FALSE(phy_->Read22(1));
    EXPECT_FALSE(phy_->Read45(7, 60));
    EXPECT_FALSE(Write(0, 0x1000));
    EXPECT_EQ(phy_->Complaint(), "written during the software reset");
    EXPECT_FALSE(Write(7, 60, 0));
    Wait(19ms);
    EXPECT_EQ(Read(0) & 0x8000, 0x8000);
    Wait(1ms);
    EXPECT_EQ(Read(0), 0x1000);
    EXPECT_EQ(Read(4), 0x01E1);
    EXPECT_EQ(Read(9), 0x0300);
    EXPECT_EQ(Read(7, 60), 0);
    Wait(1500ms);
    EXPECT_TRUE(LinkUp());
}

TEST_F(PhyLink, TimeThatPassesInOneStepCountsInFull)
{
    MakeSettled();
    ASSERT_TRUE(Write(0, 0x8000));
    Wait(20ms + 1500ms);
    EXPECT_TRUE(LinkUp());
}

TEST_F(PhyLink, TheResetLineEndsASoftwareReset)
{
    MakeSettled();
    ASSERT_TRUE(Write(0, 0x8000));
    phy_->SetResetLine(true);
    phy_->SetResetLine(false);
    Wait(50ms);
    EXPECT_EQ(Read(0), 0x1000);
}

TEST_F(PhyLink, ResetForgetsThatTheLinkSlept)
{
    Make(WithPartner(kPhy1000Full, true, true));
    ASSERT_TRUE(Write(7, 60, 0x0004));
    Wait(1500ms);
    phy_->SetResetLine(true);
    phy_->SetResetLine(false);
    Wait(50ms);
    EXPECT_EQ(Read(3, 1) & 0x0C00, 0);
}

TEST_F(PhyLink, EverySpeedCodeHasItsModeAndNoOtherHasAny)
{
    for (PhyMode mode : kModes)
        EXPECT_EQ(ModeFor(SpeedCodeOf(mode), IsFullDuplex(mode)), mode);
    for (unsigned code : {0U, 1U, 6U, 7U})
        for (bool full : {false, true})
            EXPECT_EQ(ModeFor(code, full), kPhyNoMode) << code;
    EXPECT_EQ(ModeFor(5, false), kPhyNoMode);
}

TEST_F(PhyLink, StateSaysWhatTheRegistersMean)
{
    MakeSettled(WithPartner(kPhy1000Full, true, true));
    auto state = phy_->State();
    EXPECT_EQ(state.at("answers"), true);
    EXPECT_EQ(state.at("poweredDown"), false);
    EXPECT_EQ(state.at("autoneg"), true);
    EXPECT_EQ(state.at("link"), nlohmann::json({{"up", true},
                                                {"speed", 4},
                                                {"megabits", 1000},
                                                {"fullDuplex", true},
                                                {"parallelDetection", false}}));
    EXPECT_EQ(state.at("eeeActive"), false);
    EXPECT_EQ(state.at("laneGood"), true);
    EXPECT_EQ(state.at("partner"),
              nlohmann::json({{"connected", true}, {"autoneg", true}, {"eee", true}}));
}

}  // namespace
}  // namespace vboard
