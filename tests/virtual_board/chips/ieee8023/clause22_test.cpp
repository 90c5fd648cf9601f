// The clause-22 registers of the PHY model against the standard, register by register.
#include <stdexcept>

#include "tests/virtual_board/chips/ieee8023/model_fixture.h"

namespace vboard {
namespace {

using PhyRegisters = ModelTest;

TEST_F(PhyRegisters, ControlStartsWithNegotiationOn)
{
    Make();
    EXPECT_EQ(Read(0), 0x1000);
}

TEST_F(PhyRegisters, ControlOfAPhyWithoutNegotiationStartsForcedToItsFastestMode)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    EXPECT_EQ(Read(0), 0x2100);
}

TEST_F(PhyRegisters, ControlKeepsWhatIsWrittenButTheSelfClearingBits)
{
    Make();
    EXPECT_TRUE(Write(0, 0x7FC0));
    EXPECT_EQ(Read(0), 0x7DC0);
}

TEST_F(PhyRegisters, ControlRefusesReservedAndUnidirectionalBits)
{
    Make();
    for (unsigned bit = 0; bit <= 5; ++bit)
        EXPECT_FALSE(Write(0, static_cast<uint16_t>(0x1000U | 1U << bit))) << bit;
    EXPECT_EQ(Read(0), 0x1000);
}

TEST_F(PhyRegisters, ControlRefusesNegotiationOfAPhyThatLacksIt)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    EXPECT_FALSE(Write(0, 0x1000));
    EXPECT_FALSE(Write(0, 0x2300));
    EXPECT_EQ(phy_->Complaint(), "ability that the PHY lacks");
}

TEST_F(PhyRegisters, ControlTakesTheReservedSpeedOnlyWhileNegotiationMakesItMoot)
{
    Make();
    EXPECT_FALSE(Write(0, 0x2140));
    EXPECT_EQ(phy_->Complaint(), "mode that the PHY lacks");
    EXPECT_TRUE(Write(0, 0x3240));
}

TEST_F(PhyRegisters, ControlRefusesAForcedModeThatThePhyLacks)
{
    Make(PlainPhy());
    EXPECT_FALSE(Write(0, 0x0140));
    EXPECT_TRUE(Write(0, 0x2100));
    EXPECT_TRUE(Write(0, 0x0000));
}

TEST_F(PhyRegisters, StatusShowsTheModesOfThePhyAlone)
{
    struct Row {
        PhyModes modes;
        uint16_t bits;
    };
    for (Row row : {Row{kPhy10Half, 0x0800}, Row{kPhy10Full, 0x1000}, Row{kPhy100Half, 0x2000},
                    Row{kPhy100Full, 0x4000}}) {
        PhyConfig config = PlainPhy();
        config.modes = row.modes;
        config.partner = NoPartner();
        Make(config);
        EXPECT_EQ(Read(1), row.bits | 0x0049);
    }
}

TEST_F(PhyRegisters, StatusPointsToTheExtendedStatusOfAGigabitPhy)
{
    Make();
    EXPECT_EQ(Read(1) & 0x0100, 0x0100);
    Make(PlainPhy());
    EXPECT_EQ(Read(1) & 0x0100, 0);
}

TEST_F(PhyRegisters, StatusOfAPhyWithoutNegotiationSaysSo)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    MakeSettled(config);
    EXPECT_EQ(Read(1) & 0x0028, 0);
}

TEST_F(PhyRegisters, LinkStatusStaysLowUntilItIsReadOnce)
{
    MakeSettled();
    EXPECT_EQ(Read(1) & 0x0004, 0);
    EXPECT_EQ(Read(1) & 0x0024, 0x0024);
    EXPECT_EQ(Read(1) & 0x0024, 0x0024);
    phy_->SetLink(0, false, 1, true);
    phy_->SetLink(0, true, 1, true);
    Wait(1500ms);
    EXPECT_EQ(Read(1) & 0x0004, 0);
    EXPECT_EQ(Read(1) & 0x0004, 0x0004);
}

TEST_F(PhyRegisters, LinkStatusIsNotLatchedByPeeking)
{
    MakeSettled();
    EXPECT_EQ(*phy_->Peek22(1) & 0x0004, 0);
    EXPECT_EQ(Read(1) & 0x0004, 0);
    EXPECT_EQ(*phy_->Peek22(1) & 0x0004, 0x0004);
}

TEST_F(PhyRegisters, IdentifierIsTheConfiguredOne)
{
    PhyConfig config;
    config.identifier = 0x12345678;
    Make(config);
    EXPECT_EQ(Read(2), 0x1234);
    EXPECT_EQ(Read(3), 0x5678);
}

TEST_F(PhyRegisters, ReadOnlyRegistersRefuseEveryWrite)
{
    MakeSettled();
    for (uint8_t reg : Bytes{1, 2, 3, 5, 6, 8, 10, 15}) {
        EXPECT_FALSE(Write(reg, *phy_->Peek22(reg))) << unsigned{reg};
        EXPECT_EQ(phy_->Complaint(), "read-only register");
    }
}

TEST_F(PhyRegisters, AdvertisementStartsWithAllThatThePhyCan)
{
    Make();
    EXPECT_EQ(Read(4), 0x01E1);
    PhyConfig config = PlainPhy();
    config.modes = kPhy10Half | kPhy100Half;
    Make(config);
    EXPECT_EQ(Read(4), 0x00A1);
}

TEST_F(PhyRegisters, AdvertisementTakesModesPauseAndNextPage)
{
    Make();
    EXPECT_TRUE(Write(4, 0xBDE1));
    EXPECT_EQ(Read(4), 0xBDE1);
}

TEST_F(PhyRegisters, AdvertisementRefusesWhatIsReservedOrLacking)
{
    PhyConfig config = PlainPhy();
    config.modes = kPhy10Half | kPhy100Half;
    Make(config);
    for (uint16_t bits : Words{0x4000, 0x1000, 0x0200, 0x0100, 0x0040})
        EXPECT_FALSE(Write(4, bits | 0x00A1)) << bits;
    EXPECT_FALSE(Write(4, 0x00A0)) << "no selector";
    EXPECT_FALSE(Write(4, 0x00A2)) << "a reserved selector";
    EXPECT_EQ(Read(4), 0x00A1);
}

TEST_F(PhyRegisters, PartnerAbilityIsEmptyUntilPagesWereExchanged)
{
    Make();
    EXPECT_EQ(Read(5), 0);
    Wait(1499ms);
    EXPECT_EQ(Read(5), 0);
    Wait(1ms);
    EXPECT_EQ(Read(5), 0x41E1);
}

TEST_F(PhyRegisters, PartnerAbilityShowsEachModeOfThePartner)
{
    for (PhyModes mode : {kPhy10Half, kPhy10Full, kPhy100Half, kPhy100Full}) {
        MakeSettled(WithPartner(mode));
        EXPECT_EQ(Read(5), 0x4001 | mode << 5);
    }
}

TEST_F(PhyRegisters, PartnerAbilityAfterParallelDetectionIsTheTechnologyFound)
{
    MakeSettled(WithPartner(kPhy100Full, false));
    EXPECT_EQ(Read(5), 0x0080);
    EXPECT_EQ(Read(6), 0x0004);
    MakeSettled(WithPartner(kPhy10Full, false));
    EXPECT_EQ(Read(5), 0x0020);
}

TEST_F(PhyRegisters, ExpansionTellsOnceThatAPageCame)
{
    MakeSettled();
    EXPECT_EQ(Read(6), 0x000F);
    EXPECT_EQ(Read(6), 0x000D);
    MakeSettled(WithPartner(kPhy100Full));
    EXPECT_EQ(Read(6), 0x0007) << "a partner without next pages";
}

TEST_F(PhyRegisters, NextPageStartsWithTheNullMessage)
{
    Make();
    EXPECT_EQ(Read(7), 0x2001);
    EXPECT_EQ(Read(8), 0);
    EXPECT_TRUE(Write(7, 0xB7FF));
    EXPECT_EQ(Read(7), 0xB7FF);
    EXPECT_FALSE(Write(7, 0x4000));
    EXPECT_FALSE(Write(7, 0x0800)) << "the toggle bit is read only";
}

TEST_F(PhyRegisters, NegotiationRegistersBelongToPhysThatNegotiate)
{
    PhyConfig config = PlainPhy();
    config.negotiates = false;
    Make(config);
    for (uint8_t reg = 4; reg <= 8; ++reg) {
        EXPECT_FALSE(phy_->Read22(reg)) << unsigned{reg};
        EXPECT_EQ(phy_->Complaint(), "no such register");
        EXPECT_FALSE(Write(reg, 0x0001)) << unsigned{reg};
    }
}

TEST_F(PhyRegisters, GigabitControlStartsWithTheModesAndRefusesTheRest)
{
    Make();
    EXPECT_EQ(Read(9), 0x0300);
    EXPECT_TRUE(Write(9, 0x1F00));
    EXPECT_EQ(Read(9), 0x1F00);
    EXPECT_FALSE(Write(9, 0x0301));
    EXPECT_FALSE(Write(9, 0x2300));
    PhyConfig config;
    config.modes &= ~kPhy1000Half;
    Make(config);
    EXPECT_EQ(Read(9), 0x0200);
    EXPECT_FALSE(Write(9, 0x0300));
}

TEST_F(PhyRegisters, GigabitStatusShowsThePartnerAndTheReceivers)
{
    MakeSettled(WithPartner(kPhy1000Full));
    EXPECT_EQ(Read(10), 0x3800);
    MakeSettled(WithPartner(kPhy1000Half));
    EXPECT_EQ(Read(10), 0x3400);
    MakeSettled(WithPartner(kPhy100Full));
    EXPECT_EQ(Read(10), 0);
}

TEST_F(PhyRegisters, GigabitStatusShowsTheMasterResolution)
{
    MakeSettled();
    EXPECT_EQ(Read(10) & 0x4000, 0);
    Write(9, 0x1B00);
    Write(0, 0x1200);
    Wait(1500ms);
    EXPECT_EQ(Read(10) & 0x4000, 0x4000);
    Write(9, 0x1300);
    Write(0, 0x1200);
    Wait(1500ms);
    EXPECT_EQ(Read(10) & 0x4000, 0);
}

TEST_F(PhyRegisters, IdleErrorsStopAt255AndAreClearedByReading)
{
    MakeSettled();
    EXPECT_TRUE(phy_->AddCounter(0, "idle_errors", 3));
    EXPECT_EQ(Read(10) & 0xFF, 3);
    EXPECT_EQ(Read(10) & 0xFF, 0);
    EXPECT_TRUE(phy_->AddCounter(0, "idle_errors", 254));
    EXPECT_TRUE(phy_->AddCounter(0, "idle_errors", 2));
    EXPECT_EQ(*phy_->Peek22(10) & 0xFF, 255);
    EXPECT_EQ(Read(10) & 0xFF, 255);
}

TEST_F(PhyRegisters, AMasterFaultIsShownUntilItIsRead)
{
    MakeSettled();
    EXPECT_EQ(Read(10) & 0x8000, 0);
    EXPECT_TRUE(phy_->AddCounter(0, "master_faults", 3));
    EXPECT_EQ(Read(10) & 0x8000, 0x8000);
    EXPECT_EQ(Read(10) & 0x8000, 0);
}

TEST_F(PhyRegisters, ExtendedStatusShowsTheGigabitModes)
{
    Make();
    EXPECT_EQ(Read(15), 0x3000);
    PhyConfig config;
    config.modes &= ~kPhy1000Half;
    Make(config);
    EXPECT_EQ(Read(15), 0x2000);
}

TEST_F(PhyRegisters, GigabitRegistersBelongToGigabitPhys)
{
    Make(PlainPhy());
    for (uint8_t reg : Bytes{9, 10, 15}) {
        EXPECT_FALSE(phy_->Read22(reg)) << unsigned{reg};
        EXPECT_FALSE(Write(reg, 0)) << unsigned{reg};
    }
    EXPECT_FALSE(phy_->AddCounter(0, "idle_errors", 1));
    EXPECT_FALSE(phy_->AddCounter(0, "master_faults", 1));
}

TEST_F(PhyRegisters, OtherRegistersDoNotExist)
{
    Make();
    for (uint8_t reg : Bytes{11, 12, 16, 20, 31}) {
        EXPECT_FALSE(phy_->Read22(reg)) << unsigned{reg};
        EXPECT_FALSE(Write(reg, 0)) << unsigned{reg};
        EXPECT_FALSE(phy_->Peek22(reg)) << unsigned{reg};
    }
}

TEST_F(PhyRegisters, APhyNeedsModesThatFitTogether)
{
    auto refused = [](auto change) {
        PhyConfig config;
        change(config);
        EXPECT_THROW(PhyModel{config}, std::invalid_argument);
    };
    refused([](PhyConfig& config) { config.modes = config.eee = 0; });
    refused([](PhyConfig& config) { config.modes = 0x80; });
    refused([](PhyConfig& config) { config.negotiates = false; });
    refused([](PhyConfig& config) { config.clause45 = config.indirect = false; });
    refused([](PhyConfig& config) { config.eee = kPhy1000Half; });
    refused([](PhyConfig& config) { config.modes = kPhy100Full; });
}

}  // namespace
}  // namespace vboard
