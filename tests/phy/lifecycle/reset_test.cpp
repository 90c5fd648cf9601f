// ETHPHY_ResetDisable and ETHPHY_ResetEnable: the pulse, the wait, the order, what is left behind.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

// A library without the lane check, so that the lane is always reset.
PhyBoard PlainBoard(uint32_t resetPin = 19)
{
    PhyBoard board{{{}}};
    board.entries[0].halLibName = "libsecond.so";
    board.entries[0].resetGpioPin = resetPin;
    board.entries[0].ifaceSpeed = OB_SPEED_1G;
    return board;
}

const char* const kEntry = "phy9 ETHPHY_ResetDisable:# DevIndex=0 DefConfig=0";
const char* const kFailed = "phy1 ETHPHY_ResetDisable:# failed Phy=0";
const Lines kPulse = {"sys write(sgmii1_reset, \"0\")", "wait usleep(300000)",
                      "phy3 ETHPHY_ResetDisable:# Setting GPIO 19 to 1",
                      "sys write(sgmii1_reset, \"1\")"};
const Lines kReadIdentifier = {"wait usleep(100000)",
                               "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0xB, reg=2, bus=2)"};
const Lines kLane = {"sys open(/dev/modphy_drv, O_RDONLY)", "sys ioctl(MODPHY_RESET_LANE, 4)",
                     "sys close()"};
const Lines kEnable = {"phy3 [ETHPHY_ResetDisable] PHY0 ULP = 0", "hal1 GetCaps(0, ptr)",
                       "hal1 SetAdminState(0, 1)"};

class PhyReset : public PhyTest {
protected:
    PhyReset()
    {
        platform.mii = [this](unsigned long, MiiWords& words) {
            ++reads;
            words.valueOut = reads < answersFrom ? 0xFFFF : 0x0141;
            return reads != failsAt;
        };
        platform.slots["GetCaps"] = [](const SlotArgs& args) {
            *reinterpret_cast<uint32_t*>(args[1]) = 0xC0FFEE;
            return 0;
        };
    }

    // Without the socket and the trace lines of the register reads.
    Lines Sequence() const
    {
        Lines lines;
        for (const std::string& line : Steps())
            if (line.find("MdioBus=") == std::string::npos && line != "sys socket(2, 2, 0)")
                lines.push_back(line);
        return lines;
    }

    int reads = 0;
    int answersFrom = 1;
    int failsAt = -1;
};

}  // namespace

TEST_F(PhyReset, DisableRunsTheWholeSequence)
{
    Init(PlainBoard());
    Record().postResetMark = 0xFF;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(Sequence(),
              Lines({kEntry, kLock}) + kPulse + kReadIdentifier +
                  Lines({"phy3 [wait_for_phy_ready] PHY become available after 100 ms. PHY "
                         "indentifier 0x141",
                         "hal1 ResetDisable(0, 0)"}) +
                  kLane + kEnable + Lines({kUnlock}));
    EXPECT_EQ(Record().config.hwState, 2U);
    EXPECT_EQ(Record().caps, 0xC0FFEEU);
    EXPECT_EQ(Record().capsValid, 1);
    EXPECT_EQ(Record().postResetMark, 0);
}

TEST_F(PhyReset, ThePhyCountsAsHeldInResetDuringTheSequence)
{
    Init(PlainBoard());
    Record().config.hwState = EP_HW_STATE_ENABLED;
    std::vector<uint32_t> states;
    std::vector<int> semaphore;
    for (const char* slot : {"ResetDisable", "GetCaps"})
        platform.slots[slot] = [&](const SlotArgs&) {
            states.push_back(Record().config.hwState);
            semaphore.push_back(PhySemaphoreValue());
            return 0;
        };
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_THAT(states, testing::ElementsAre(1U, 2U));
    EXPECT_THAT(semaphore, testing::ElementsAre(0, 0));
}

TEST_F(PhyReset, WithoutAPinThereIsNoPulseAndNoWait)
{
    for (uint32_t pin : {0xFFFFFFFFU, 255U, 0x12FFU}) {
        if (PhySemaphoreValue() == -1)
            Init(PlainBoard());
        Record().board.resetGpioPin = pin;
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
        EXPECT_EQ(Sequence(), Lines({kEntry, kLock, "hal1 ResetDisable(0, 0)"}) + kLane + kEnable +
                                  Lines({kUnlock}));
    }
}

TEST_F(PhyReset, OnlyTheLowByteOfThePinCounts)
{
    Init(PlainBoard(0x00000113));
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_TRUE(transcript.Has("Setting GPIO 19 to 1"));
    EXPECT_TRUE(transcript.Has("sys write(sgmii1_reset, \"1\")"));
}

TEST_F(PhyReset, ALineThatCannotBeDrivenDoesNotStopTheSequence)
{
    Init(PlainBoard(17));
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_TRUE(transcript.Has("log1 OBOS_SetGpioValue:# Unknown GPIO 17"));
    EXPECT_EQ(Record().config.hwState, 2U);
}

// ---- The wait for the identifier.

TEST_F(PhyReset, WaitsUntilThePhyAnswers)
{
    for (int round : {2, 7, 19, 20}) {
        if (PhySemaphoreValue() == -1)
            Init(PlainBoard());
        reads = 0;
        answersFrom = round;
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
        EXPECT_EQ(reads, round);
        EXPECT_EQ(transcript.Only({"wait"}).size(), 1U + round);
        EXPECT_TRUE(transcript.Has("phy3 [wait_for_phy_ready] PHY become available after " +
                                   std::to_string(round * 100) + " ms. PHY indentifier 0x141"));
    }
}

TEST_F(PhyReset, GivesUpAfterTwentyRoundsAndGoesOn)
{
    Init(PlainBoard());
    answersFrom = 99;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    Lines expected = Lines({kEntry, kLock}) + kPulse;
    for (int round = 0; round < 20; ++round)
        expected = expected + kReadIdentifier;
    EXPECT_EQ(Sequence(), expected +
                              Lines({"phy1 [wait_for_phy_ready] PHY MDIO communication failed\n",
                                     "hal1 ResetDisable(0, 0)"}) +
                              kLane + kEnable + Lines({kUnlock}));
}

TEST_F(PhyReset, AReadErrorEndsTheWaitAndTheSequenceGoesOn)
{
    Init(PlainBoard());
    answersFrom = 99;
    failsAt = 3;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(
        Sequence(),
        Lines({kEntry, kLock}) + kPulse + kReadIdentifier + kReadIdentifier + kReadIdentifier +
            Lines({"phy1 EPHAL_DirectMdioReadAccess:# ioctl failed, errno=5", "sys close()",
                   "phy1 [wait_for_phy_ready] ReadMdio failed\n", "hal1 ResetDisable(0, 0)"}) +
            kLane + kEnable + Lines({kUnlock}));
}

TEST_F(PhyReset, IdentifiersBelowAllOnesCount)
{
    Init(PlainBoard());
    for (int identifier : {0x0000, 0xFFFE}) {
        platform.mii = [&](unsigned long, MiiWords& words) {
            words.valueOut = static_cast<uint16_t>(identifier);
            return true;
        };
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
        char text[64];
        snprintf(text, sizeof(text), "after 100 ms. PHY indentifier 0x%X", identifier);
        EXPECT_TRUE(transcript.Has(text));
    }
}

TEST_F(PhyReset, AWaitCutShortIsResumed)
{
    Init(PlainBoard());
    platform.Fail("usleep", EINTR);
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_THAT(transcript.Only({"wait"}),
                testing::ElementsAre("wait usleep(300000)",
                                     testing::MatchesRegex(R"(wait usleep\(29[0-9]{4}\))"),
                                     "wait usleep(100000)"));
}

// ---- Configuration and failures.

TEST_F(PhyReset, DefConfigBringsTheDefaultsBack)
{
    Init(PlainBoard());
    Record().config = {.hwState = 0,
                       .word8 = 8,
                       .word12 = 12,
                       .word16 = 16,
                       .adminState = 0,
                       .word24 = 24,
                       .word28 = 28};
    EXPECT_EQ(ETHPHY_ResetDisable(0, 5), 0);
    EXPECT_TRUE(transcript.Has("hal1 ResetDisable(0, 5)"));
    EXPECT_TRUE(transcript.Has("hal1 SetAdminState(0, 1)"));
    const PhyProvConfig& config = Record().config;
    EXPECT_EQ(config.adminState, 1U);
    EXPECT_EQ(config.word8, 8U);
    EXPECT_EQ(config.word12, 1U);
    EXPECT_EQ(config.word16, 1U);
    EXPECT_EQ(config.word24, 24U);
    EXPECT_EQ(config.word28, 28U);
}

TEST_F(PhyReset, WithoutDefConfigTheStoredAdminStateIsApplied)
{
    Init(PlainBoard());
    Record().config.hwState = EP_HW_STATE_DISABLED;
    EXPECT_EQ(ETHPHY_SetAdminState(0, 0), 0);
    Record().config.word12 = 12;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_TRUE(transcript.Has("hal1 SetAdminState(0, 0)"));
    EXPECT_EQ(Record().config.word12, 12U);
    EXPECT_EQ(Record().config.hwState, 2U);
}

TEST_F(PhyReset, AFailingHalResetIsOnlyLogged)
{
    Init(PlainBoard(255));
    platform.FailSlot("ResetDisable");
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(Sequence(), Lines({kEntry, kLock, "hal1 ResetDisable(0, 0)", kFailed}) + kLane +
                              kEnable + Lines({kUnlock}));
}

TEST_F(PhyReset, CapabilitiesThatCannotBeReadFailTheCall)
{
    Init(PlainBoard(255));
    Record().capsValid = 1;
    Record().postResetMark = 0xFF;
    platform.FailSlot("GetCaps");
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), -1);
    EXPECT_EQ(Sequence(), Lines({kEntry, kLock, "hal1 ResetDisable(0, 0)"}) + kLane +
                              Lines({kEnable[0], kEnable[1], kFailed, kUnlock}));
    EXPECT_EQ(Record().capsValid, 0);
    EXPECT_EQ(Record().postResetMark, 0xFF);
    EXPECT_EQ(Record().config.hwState, 2U);
}

TEST_F(PhyReset, AnAdminStateThatCannotBeAppliedFailsTheCall)
{
    Init(PlainBoard(255));
    platform.FailSlot("SetAdminState");
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), -1);
    EXPECT_EQ(Sequence(), Lines({kEntry, kLock, "hal1 ResetDisable(0, 0)"}) + kLane + kEnable +
                              Lines({kFailed, kUnlock}));
    EXPECT_EQ(Record().capsValid, 1);
    EXPECT_EQ(Record().config.hwState, 2U);
}

TEST_F(PhyReset, LogsTheUlpModeOfPhy0ForEveryPhy)
{
    PhyBoard board{{{}, {}}};
    board.ulpMode = 9;
    Init(board);
    PhyRegion().vendor[1].ulpModeEnabled = 77;
    EXPECT_EQ(ETHPHY_ResetDisable(1, 0), 0);
    EXPECT_TRUE(transcript.Has("phy3 [ETHPHY_ResetDisable] PHY0 ULP = 1"));
}

// ---- ETHPHY_ResetEnable.

namespace {

const char* const kEnableEntry = "phy9 ETHPHY_ResetEnable:# DevIndex=0";
const char* const kEnableFailed = "phy1 ETHPHY_ResetEnable:# failed Phy=0";
const Lines kHold = {"phy3 ETHPHY_ResetEnable:# Setting GPIO 19 to 0",
                     "sys write(sgmii1_reset, \"0\")"};

}  // namespace

TEST_F(PhyReset, EnableOfAnEnabledPhyTakesItDownFirst)
{
    InitEnabled(PlainBoard());
    EXPECT_EQ(ETHPHY_ResetEnable(0), 0);
    EXPECT_EQ(Sequence(),
              Lines({kEnableEntry, kLock, "hal1 SetAdminState(0, 0)", "hal1 ResetEnable(0)"}) +
                  kHold + Lines({kUnlock}));
    EXPECT_EQ(Record().config.hwState, 1U);
    EXPECT_EQ(Record().config.adminState, 1U) << "the stored value is for the next bring-up";
    EXPECT_EQ(Record().postResetMark, 0xFF);
}

TEST_F(PhyReset, EnableOfAPhyThatIsNotEnabledLeavesItsState)
{
    Init(PlainBoard());
    for (uint32_t state : {0U, 1U, 3U}) {
        Record().config.hwState = state;
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetEnable(0), 0);
        EXPECT_EQ(Sequence(),
                  Lines({kEnableEntry, kLock, "hal1 ResetEnable(0)"}) + kHold + Lines({kUnlock}));
        EXPECT_EQ(Record().config.hwState, state);
    }
}

TEST_F(PhyReset, EnableIgnoresAFailingAdminState)
{
    InitEnabled(PlainBoard(255));
    platform.FailSlot("SetAdminState");
    EXPECT_EQ(ETHPHY_ResetEnable(0), 0);
    EXPECT_EQ(Sequence(), Lines({kEnableEntry, kLock, "hal1 SetAdminState(0, 0)", kEnableFailed,
                                 "hal1 ResetEnable(0)", kUnlock}));
    EXPECT_EQ(Record().config.hwState, 1U);
}

TEST_F(PhyReset, EnableWithoutAPinReturnsTheHalsResult)
{
    InitEnabled(PlainBoard(0xFFFFFFFF));
    platform.FailSlot("ResetEnable");
    EXPECT_EQ(ETHPHY_ResetEnable(0), -1);
    EXPECT_EQ(Sequence(), Lines({kEnableEntry, kLock, "hal1 SetAdminState(0, 0)",
                                 "hal1 ResetEnable(0)", kEnableFailed, kUnlock}));
    EXPECT_EQ(Record().postResetMark, 0xFF);
}

TEST_F(PhyReset, EnableWithAPinReturnsTheLinesResult)
{
    InitEnabled(PlainBoard());
    platform.FailSlot("ResetEnable");
    EXPECT_EQ(ETHPHY_ResetEnable(0), 0);
    EXPECT_TRUE(transcript.Has(kEnableFailed));
}

TEST_F(PhyReset, EnableFailsWithALineThatCannotBeDriven)
{
    Init(PlainBoard());
    platform.Fail("fopen", EACCES);
    EXPECT_EQ(ETHPHY_ResetEnable(0), -1);
    EXPECT_EQ(Sequence(), Lines({kEnableEntry, kLock, "hal1 ResetEnable(0)", kHold[0],
                                 kEnableFailed, kUnlock}));
    EXPECT_EQ(Record().postResetMark, 0xFF);
}

TEST_F(PhyReset, EnableUsesOnlyTheLowByteOfThePin)
{
    Init(PlainBoard(0x113));
    EXPECT_EQ(ETHPHY_ResetEnable(0), 0);
    EXPECT_EQ(Sequence(),
              Lines({kEnableEntry, kLock, "hal1 ResetEnable(0)"}) + kHold + Lines({kUnlock}));
}
