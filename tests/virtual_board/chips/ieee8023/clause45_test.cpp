// The clause-45 registers of the PHY model against the standard, register by register.
#include "tests/virtual_board/chips/ieee8023/model_fixture.h"

namespace vboard {
namespace {

using PhyMmds = ModelTest;

constexpr uint8_t kMmds[] = {1, 3, 7};
constexpr PhyModes kAllEee = kPhy100Full | kPhy1000Full | kPhy2500Full;

TEST_F(PhyMmds, IdentifiersAndDevicesAreAlikeInEveryMmd)
{
    PhyConfig config;
    config.identifier = 0x12345678;
    Make(config);
    for (uint8_t mmd : kMmds) {
        EXPECT_EQ(Read(mmd, 2), 0x1234);
        EXPECT_EQ(Read(mmd, 3), 0x5678);
        EXPECT_EQ(Read(mmd, 5), 0x008B) << "clause 22, PMA, PCS and AN";
        EXPECT_EQ(Read(mmd, 6), 0x8000) << "vendor 2";
        EXPECT_EQ(Read(mmd, 14), 0x1234);
        EXPECT_EQ(Read(mmd, 15), 0x5678);
    }
    EXPECT_EQ(Read(31, 2), 0x1234);
    EXPECT_EQ(Read(31, 8), 0x8000);
}

TEST_F(PhyMmds, NobodyAnswersInAnMmdThatIsAbsent)
{
    Make();
    for (uint8_t mmd : Bytes{0, 2, 4, 29, 30})
        EXPECT_EQ(Read(mmd, 5), 0xFFFF) << unsigned{mmd};
    EXPECT_FALSE(Write(29, 0, 0));
    EXPECT_EQ(phy_->Complaint(), "no such MMD");
}

TEST_F(PhyMmds, APhyWithoutClause45AnswersNoSuchFrame)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    EXPECT_EQ(Read(7, 5), 0xFFFF);
    EXPECT_FALSE(Write(7, 60, 0));
}

TEST_F(PhyMmds, UndefinedRegistersReadZeroAndTakeNoWrite)
{
    Make();
    for (uint8_t mmd : kMmds) {
        EXPECT_EQ(Read(mmd, 100), 0);
        EXPECT_FALSE(Write(mmd, 100, 0));
    }
}

TEST_F(PhyMmds, VendorRegistersDoNotExistButTheLaneStatus)
{
    Make();
    EXPECT_FALSE(phy_->Read45(7, 0x8000));
    EXPECT_FALSE(phy_->Read45(31, 0));
    EXPECT_EQ(Read(31, 0x0E23), 1);
    phy_->SetLaneGood(false);
    EXPECT_EQ(Read(31, 0x0E23), 0);
    EXPECT_FALSE(Write(31, 0x0E23, 1));
}

TEST_F(PhyMmds, PmaShowsTheSpeedsOfThePhy)
{
    Make();
    EXPECT_EQ(Read(1, 4), 0x2070);
    EXPECT_EQ(Read(1, 8), 0x8200);
    EXPECT_EQ(Read(1, 11), 0x41A0);
    EXPECT_EQ(Read(1, 21), 0x0001);
    PhyConfig config;
    config.modes = kPhy100Full;
    config.eee = kPhy100Full;
    Make(config);
    EXPECT_EQ(Read(1, 4), 0x0020);
    EXPECT_EQ(Read(1, 11), 0x0080);
    EXPECT_EQ(Read(1, 21), 0);
}

TEST_F(PhyMmds, PmaControlShowsTheSpeedOfA2500Link)
{
    MakeSettled(WithPartner(kPhy2500Full));
    EXPECT_EQ(Read(1, 0), 0x2058);
}

TEST_F(PhyMmds, LinkStatusIsLatchedInEachRegisterForItself)
{
    MakeSettled();
    for (uint8_t mmd : kMmds) {
        EXPECT_EQ(Read(mmd, 1) & 0x0004, 0) << unsigned{mmd};
        EXPECT_EQ(Read(mmd, 1) & 0x0004, 0x0004) << unsigned{mmd};
    }
    phy_->SetLink(0, false, 1, true);
    EXPECT_EQ(Read(1, 1) & 0x0004, 0);
    phy_->SetLink(0, true, 1, true);
    Wait(1500ms);
    EXPECT_EQ(Read(1, 1) & 0x0004, 0) << "it was down when it was read last";
    EXPECT_EQ(Read(1, 1) & 0x0004, 0x0004);
}

TEST_F(PhyMmds, LowPowerOfPmaAndPcsIsThatOfThePhy)
{
    MakeSettled();
    EXPECT_TRUE(Write(3, 0, 0x0800));
    EXPECT_EQ(Read(0), 0x1800);
    EXPECT_EQ(Read(1, 0), 0x0800);
    EXPECT_FALSE(LinkUp());
    EXPECT_TRUE(Write(1, 0, 0x0000));
    EXPECT_EQ(Read(3, 0), 0);
    EXPECT_FALSE(Write(1, 0, 0x0001));
    EXPECT_FALSE(Write(3, 0, 0x4000));
}

TEST_F(PhyMmds, EveryMmdCanResetThePhy)
{
    for (uint8_t mmd : kMmds) {
        MakeSettled();
        EXPECT_TRUE(Write(4, 0x0001));
        EXPECT_TRUE(Write(mmd, 0, 0x8000));
        EXPECT_EQ(Read(mmd, 0) & 0x8000, 0x8000);
        EXPECT_EQ(Read(0) & 0x8000, 0x8000);
        Wait(20ms);
        EXPECT_EQ(Read(mmd, 0) & 0x8000, 0);
        EXPECT_EQ(Read(4), 0x01E1);
    }
}

TEST_F(PhyMmds, NegotiationControlIsTheSameAsInClause22)
{
    MakeSettled();
    EXPECT_EQ(Read(7, 0), 0x1000);
    EXPECT_TRUE(Write(7, 0, 0x0000));
    EXPECT_EQ(Read(0) & 0x1000, 0);
    EXPECT_TRUE(Write(7, 0, 0x1200));
    EXPECT_EQ(Read(7, 0), 0x1000);
    EXPECT_FALSE(LinkUp());
    Wait(1500ms);
    EXPECT_TRUE(LinkUp());
    EXPECT_FALSE(Write(7, 0, 0x3000));
}

TEST_F(PhyMmds, NegotiationStatusShowsThePartner)
{
    MakeSettled();
    EXPECT_EQ(Read(7, 1), 0x0069);
    EXPECT_EQ(Read(7, 1), 0x002D);
    MakeSettled(WithPartner(kPhy100Full, false));
    Read(7, 1);
    EXPECT_EQ(Read(7, 1), 0x002C);
}

TEST_F(PhyMmds, AdvertisementAndPartnerAreThoseOfClause22)
{
    MakeSettled();
    EXPECT_EQ(Read(7, 16), 0x01E1);
    EXPECT_EQ(Read(7, 19), 0x41E1);
    EXPECT_TRUE(Write(7, 16, 0x0061));
    EXPECT_EQ(Read(4), 0x0061);
    EXPECT_FALSE(Write(7, 16, 0x4061));
    EXPECT_FALSE(Write(7, 19, 0));
}

TEST_F(PhyMmds, MultiGigControlAndStatus)
{
    MakeSettled(WithPartner(kPhy2500Full));
    EXPECT_EQ(Read(7, 32), 0x0080);
    EXPECT_EQ(Read(7, 33), 0x3020);
    EXPECT_TRUE(Write(7, 32, 0x40A2));
    EXPECT_EQ(Read(7, 32), 0x40A2);
    EXPECT_TRUE(Write(7, 32, 0x4002));
    for (uint16_t lacking : Words{0x1000, 0x0100, 0x0040, 0x0800, 0x0008})
        EXPECT_FALSE(Write(7, 32, lacking)) << lacking;
    EXPECT_FALSE(Write(7, 33, 0));
}

TEST_F(PhyMmds, MultiGigIsAbsentFromAGigabitPhy)
{
    PhyConfig config = WithPartner(kPhyAllModes);
    config.modes = kPhy1000Full;
    config.eee = 0;
    MakeSettled(config);
    EXPECT_EQ(Read(7, 32), 0);
    EXPECT_EQ(Read(7, 33), 0);
    EXPECT_FALSE(Write(7, 32, 0x0080));
    EXPECT_EQ(Read(3, 4), 0);
    EXPECT_FALSE(phy_->AddCounter(0, "ber", 1));
    EXPECT_FALSE(phy_->AddCounter(0, "wake_errors", 1));
}

TEST_F(PhyMmds, EeeAbilitiesAreTheConfiguredOnes)
{
    Make();
    EXPECT_EQ(Read(3, 20), 0x0006);
    EXPECT_EQ(Read(3, 21), 0x0001);
    PhyConfig config;
    config.eee = kPhy100Full;
    Make(config);
    EXPECT_EQ(Read(3, 20), 0x0002);
    EXPECT_EQ(Read(3, 21), 0);
    EXPECT_FALSE(Write(7, 60, 0x0004));
    EXPECT_FALSE(Write(7, 62, 0x0001));
    EXPECT_TRUE(Write(7, 60, 0x0002));
    EXPECT_EQ(Read(7, 60), 0x0002);
}

TEST_F(PhyMmds, EeePartnerShowsWhatBothSpeedsOfItHave)
{
    MakeSettled(WithPartner(kPhyAllModes, true, true));
    EXPECT_EQ(Read(7, 61), 0x0006);
    EXPECT_EQ(Read(7, 63), 0x0001);
    MakeSettled(WithPartner(kPhy100Full, true, true));
    EXPECT_EQ(Read(7, 61), 0x0002);
    EXPECT_EQ(Read(7, 63), 0);
    MakeSettled(WithPartner(kPhyAllModes));
    EXPECT_EQ(Read(7, 61), 0);
    EXPECT_EQ(Read(7, 63), 0);
    EXPECT_FALSE(Write(7, 61, 0));
}

TEST_F(PhyMmds, PcsStatusShowsLowPowerWhereBothEndsHaveEeeAtTheSpeed)
{
    for (PhyModes mode : {kPhy100Full, kPhy1000Full, kPhy2500Full}) {
        Make(WithPartner(mode, true, true));
        Write(7, 60, 0x0006);
        Write(7, 62, 0x0001);
        Wait(1500ms);
        Read(3, 1);
        EXPECT_EQ(Read(3, 1), 0x0F06) << mode;
        phy_->SetLink(0, false, 1, true);
        EXPECT_EQ(Read(3, 1), 0x0C02) << "seen until it is read";
        EXPECT_EQ(Read(3, 1), 0x0002);
    }
}

TEST_F(PhyMmds, PcsStatusShowsNoLowPowerWhenOneEndLacksIt)
{
    MakeSettled(WithPartner(kAllEee, true, true));
    Read(3, 1);
    EXPECT_EQ(Read(3, 1), 0x0006) << "not advertised";
    Make(WithPartner(kAllEee, true, false));
    Write(7, 60, 0x0006);
    Write(7, 62, 0x0001);
    Wait(1500ms);
    Read(3, 1);
    EXPECT_EQ(Read(3, 1), 0x0006) << "the partner has none";
    Make(WithPartner(kPhy100Full, true, true));
    Write(7, 60, 0x0004);
    Wait(1500ms);
    Read(3, 1);
    EXPECT_EQ(Read(3, 1), 0x0006) << "another speed";
}

TEST_F(PhyMmds, PcsErrorCountersStopAtTheirWidthAndAreClearedByReading)
{
    MakeSettled(WithPartner(kPhy2500Full));
    EXPECT_EQ(Read(3, 32), 0x1001);
    EXPECT_EQ(Read(3, 33), 0) << "the lock counts from the first read";
    phy_->AddCounter(0, "ber", 5);
    phy_->AddCounter(0, "errored_blocks", 7);
    EXPECT_EQ(Read(3, 33), 0x8507);
    EXPECT_EQ(Read(3, 33), 0x8000);
    phy_->AddCounter(0, "ber", 64);
    phy_->AddCounter(0, "errored_blocks", 256);
    EXPECT_EQ(Read(3, 33), 0xBFFF);
    phy_->SetLink(0, false, 1, true);
    EXPECT_EQ(Read(3, 33), 0);
    EXPECT_EQ(Read(3, 32), 0);
}

TEST_F(PhyMmds, WakeErrorsAreClearedByReading)
{
    Make();
    phy_->AddCounter(0, "wake_errors", 0xFFFE);
    phy_->AddCounter(0, "wake_errors", 9);
    EXPECT_EQ(Read(3, 22), 0xFFFF);
    EXPECT_EQ(Read(3, 22), 0);
}

TEST_F(PhyMmds, CountersAreNamedAndOnPort0)
{
    Make();
    EXPECT_FALSE(phy_->AddCounter(1, "wake_errors", 1));
    EXPECT_FALSE(phy_->AddCounter(0, "wake", 1));
}

TEST_F(PhyMmds, TheIndirectRegistersReachTheMmds)
{
    Make();
    EXPECT_TRUE(Write(13, 0x0007));
    EXPECT_EQ(Read(13), 0x0007);
    EXPECT_TRUE(Write(14, 60));
    EXPECT_EQ(Read(14), 60) << "the address function reads the address";
    EXPECT_TRUE(Write(13, 0x4007));
    EXPECT_TRUE(Write(14, 0x0006));
    EXPECT_EQ(Read(14), 0x0006);
    EXPECT_EQ(Read(7, 60), 0x0006);
    EXPECT_FALSE(Write(14, 0x0001));
    EXPECT_FALSE(Write(13, 0x0020)) << "reserved";
}

TEST_F(PhyMmds, TheIndirectAddressIncrementsAsTheFunctionSays)
{
    Make();
    auto address = [this](uint16_t reg) {
        Write(13, 0x0007);
        Write(14, reg);
    };
    auto addressIs = [this] {
        Write(13, 0x0007);
        return Read(14);
    };
    address(60);
    Write(13, 0x4007);
    Read(14);
    EXPECT_EQ(addressIs(), 60);
    Write(13, 0x8007);
    Read(14);
    EXPECT_EQ(addressIs(), 61);
    address(60);
    Write(13, 0xC007);
    Read(14);
    EXPECT_EQ(addressIs(), 60);
    Write(13, 0xC007);
    Write(14, 0);
    EXPECT_EQ(addressIs(), 61);
}

TEST_F(PhyMmds, EachMmdKeepsItsOwnIndirectAddress)
{
    Make();
    Write(13, 0x0007);
    Write(14, 60);
    Write(13, 0x0003);
    Write(14, 20);
    Write(13, 0x0007);
    EXPECT_EQ(Read(14), 60);
}

TEST_F(PhyMmds, ThePhyWithoutIndirectAccessIgnoresItsRegisters)
{
    PhyConfig config;
    config.indirect = false;
    Make(config);
    EXPECT_TRUE(Write(13, 0x0007));
    EXPECT_TRUE(Write(14, 0x0005));
    EXPECT_EQ(Read(13), 0);
    EXPECT_EQ(Read(14), 0);
}

TEST_F(PhyMmds, IndirectAccessWorksWithoutClause45Frames)
{
    PhyConfig config;
    config.clause45 = false;
    Make(config);
    Write(13, 0x0007);
    Write(14, 5);
    Write(13, 0x4007);
    EXPECT_EQ(Read(14), 0x008B);
}

}  // namespace
}  // namespace vboard
