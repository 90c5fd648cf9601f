#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortEee : public EnabledSwitch {};

TEST_F(PortEee, StateIsWhatTheHalReports)
{
    platform.slots["GetEeePortState"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint32_t*>(args[2]) = 0x80000001U;
        return 0;
    };
    uint32_t state = 0;
    EXPECT_EQ(ORBLINK_GetEeePortState(0, 2, &state), 0);
    EXPECT_EQ(state, 0x80000001U);
}

TEST_F(PortEee, StateIsZeroWhileTheSwitchIsNotEnabledWhateverIsStored)
{
    config.state = OB_STATE_RESET;
    uint32_t state = 77;
    EXPECT_EQ(ORBLINK_GetEeePortState(0, 2, &state), 0);
    EXPECT_EQ(state, 0U);
    EXPECT_EQ(config.eeePorts, 0x3F);
    EXPECT_HALS();
}

TEST_F(PortEee, StateGoesIntoNoNullPointerAndTakesNoSemaphore)
{
    EXPECT_EQ(ORBLINK_GetEeePortState(0, 2, nullptr), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetEeePortState:# DevIdx = 0, Port=2",
                      "log1 ORBLINK_GetEeePortState:# Bad input - EeeState is NULL");
}

TEST_F(PortEee, StateNeedsNeitherCapabilityNorPhy)
{
    record.caps.capsFlags = 0;
    uint32_t state = 77;
    EXPECT_EQ(ORBLINK_GetEeePortState(0, 0, &state), 0);
    EXPECT_HALS("hal0 GetEeePortState(0, 0, ptr)");
}

TEST_F(PortEee, NeedsTheCapability)
{
    record.caps.capsFlags = static_cast<uint8_t>(~OB_CAPS_EEE);
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), -1);
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 2), -1);
    EXPECT_LOGS("log1 ORBLINK_EnablePhyPortEee:# Switch does not support 802.3az, DevIdx=0",
                "log1 ORBLINK_DisablePhyPortEee:# Switch does not support 802.3az, DevIdx=0");
    EXPECT_HALS();
    EXPECT_EQ(config.eeePorts, 0x3F);
}

TEST_F(PortEee, NeedsTheCapabilityEvenForWhatIsStored)
{
    record.caps.capsFlags = 0;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 2), -1);
}

TEST_F(PortEee, LooksAtThePortBeforeTheCapability)
{
    record.caps.capsFlags = 0;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 8), -1);
    EXPECT_LOGS("log1 ORBLINK_EnablePhyPortEee:# Invalid PhyPortIdx=8 DevIdx=0");
}

TEST_F(PortEee, NeedsNoPhy)
{
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 7), 0);
    EXPECT_EQ(config.eeePorts, 0xBF);
}

TEST_F(PortEee, LeavesAPortDownThatNobodyEnabled)
{
    config.enabledPorts = 0;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 2), 0);
    EXPECT_HALS("hal0 DisablePort(0, 6)", "hal0 EnablePhyPortEee(0, 6)", "hal0 DisablePort(0, 2)",
                "hal0 DisablePhyPortEee(0, 2)");
    EXPECT_EQ(config.eeePorts, 0x7B);
}

TEST_F(PortEee, LeavesAPortDownThatNobodyEnabledAlsoAfterAFailure)
{
    config.enabledPorts = 0;
    platform.FailSlot("EnablePhyPortEee");
    platform.FailSlot("DisablePhyPortEee");
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), -1);
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 2), -1);
    EXPECT_FALSE(transcript.Has(" EnablePort("));
    EXPECT_EQ(config.eeePorts, 0x3F);
}

TEST_F(PortEee, IgnoresThatThePortDoesNotComeUpAgain)
{
    platform.FailSlot("EnablePort");
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_EQ(config.eeePorts, 0x7F);
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 6), 0);
    EXPECT_EQ(config.eeePorts, 0x3F);
    EXPECT_LOGS();
}

TEST_F(PortEee, FailureIsOneEvenIfThePortDoesNotComeUpAgain)
{
    platform.FailSlot("EnablePhyPortEee");
    platform.FailSlot("EnablePort");
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_EnablePhyPortEee:# EnablePhyPortEee failed, PhyPortIdx = 6, DevIdx=0");
}

TEST_F(PortEee, IsStoredOnceTheChipTookItAndBeforeThePortComesUp)
{
    std::vector<int> seen;
    for (const char* slot : {"DisablePort", "EnablePhyPortEee", "EnablePort"})
        platform.slots[slot] = [&](const SlotArgs&) {
            seen.push_back(config.eeePorts);
            return 0;
        };
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_THAT(seen, testing::ElementsAre(0x3F, 0x3F, 0x7F));
}

TEST_F(PortEee, InDvtModeIsNotedAndGoesOn)
{
    record.dvtPorts = 0x40;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 6), 0);
    EXPECT_LOGS("log2 ORBLINK_EnablePhyPortEee:# DevIdx=0 PhyPortIdx=6 is in DVT mode",
                "log2 ORBLINK_DisablePhyPortEee:# DevIdx=0 PhyPortIdx=6 is in DVT mode");
    EXPECT_EQ(record.dvtPorts, 0x40);
}

TEST_F(PortEee, InDvtModeIsNotedAlsoWhileTheSwitchIsNotEnabled)
{
    record.dvtPorts = 0x40;
    config.state = 0;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_LOGS("log2 ORBLINK_EnablePhyPortEee:# DevIdx=0 PhyPortIdx=6 is in DVT mode");
}

TEST_F(PortEee, ThatIsStoredIsFoundBeforeDvtMode)
{
    record.dvtPorts = 0x04;
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 2), 0);
    EXPECT_LOGS("log2 ORBLINK_EnablePhyPortEee:# EEE is already enabled for PortIdx=2, DevIdx=0");
}

TEST_F(PortEee, IsNotDisabledInBatteryModeNorTheSemaphoreTaken)
{
    platform.systemState = "1\n";
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 2), -1);
    EXPECT_LOGS(
        "log2 ORBLINK_DisablePhyPortEee:# Modem in battery mode - skipping VendorSpecificIoctl 0");
    EXPECT_FALSE(transcript.Has("semop"));
    EXPECT_FALSE(transcript.Has("finished"));
    EXPECT_EQ(config.eeePorts, 0x3F);
}

TEST_F(PortEee, IsEnabledInBatteryMode)
{
    platform.systemState = "1\n";
    EXPECT_EQ(ORBLINK_EnablePhyPortEee(0, 6), 0);
    EXPECT_FALSE(transcript.Has("fopen"));
}

}  // namespace
