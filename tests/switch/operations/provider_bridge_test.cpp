#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class ProviderBridge : public EnabledSwitch {};

TEST_F(ProviderBridge, RefusesTpid0WithoutTakingTheSemaphore)
{
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_EnableProviderBridgedMode:# STagTpid=0",
                      "log1 ORBLINK_EnableProviderBridgedMode:# STagTpid is zero");
}

TEST_F(ProviderBridge, ProgramsTheChipAgainForAnotherTpid)
{
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x88A8), 0);
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x9100), 0);
    EXPECT_HALS("hal0 EnableProviderBridgedMode(0, 34984)",
                "hal0 EnableProviderBridgedMode(0, 37120)");
    EXPECT_EQ(config.STagTpid, 0x9100);
}

TEST_F(ProviderBridge, TheDefaultTpidIsNoReasonNotToEnable)
{
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x8100), 0);
    EXPECT_HALS("hal0 EnableProviderBridgedMode(0, 33024)");
    EXPECT_EQ(config.InProviderBridgedMode, 1U);
}

TEST_F(ProviderBridge, AModeThatIsNeitherOnNorOffIsEnabledAndDisabled)
{
    config.InProviderBridgedMode = 2;
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x8100), 0);
    EXPECT_EQ(config.InProviderBridgedMode, 1U);
    config.InProviderBridgedMode = 2;
    EXPECT_EQ(ORBLINK_DisableProviderBridgedMode(0), 0);
    EXPECT_EQ(config.InProviderBridgedMode, 0U);
    EXPECT_HALS("hal0 EnableProviderBridgedMode(0, 33024)", "hal0 DisableProviderBridgedMode(0)");
}

TEST_F(ProviderBridge, DisablingKeepsTheTpid)
{
    ASSERT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x88A8), 0);
    EXPECT_EQ(ORBLINK_DisableProviderBridgedMode(0), 0);
    EXPECT_EQ(config.InProviderBridgedMode, 0U);
    EXPECT_EQ(config.STagTpid, 0x88A8);
}

TEST_F(ProviderBridge, IsNotDisabledInBatteryModeNorTheSemaphoreTaken)
{
    config.InProviderBridgedMode = 1;
    platform.systemState = "1\n";
    EXPECT_EQ(ORBLINK_DisableProviderBridgedMode(0), -1);
    EXPECT_LOGS(
        "log2 ORBLINK_DisableProviderBridgedMode:# Modem in battery mode - skipping "
        "VendorSpecificIoctl 0");
    EXPECT_FALSE(transcript.Has("semop"));
    EXPECT_EQ(config.InProviderBridgedMode, 1U);
}

TEST_F(ProviderBridge, IsEnabledInBatteryMode)
{
    platform.systemState = "1\n";
    EXPECT_EQ(ORBLINK_EnableProviderBridgedMode(0, 0x88A8), 0);
    EXPECT_EQ(config.InProviderBridgedMode, 1U);
}

TEST_F(ProviderBridge, ASystemStateOfZeroOrWithoutANumberIsNotBatteryMode)
{
    for (const char* state : {"0\n", "", "mains\n"}) {
        config.InProviderBridgedMode = 1;
        platform.systemState = state;
        EXPECT_EQ(ORBLINK_DisableProviderBridgedMode(0), 0) << state;
        EXPECT_EQ(config.InProviderBridgedMode, 0U);
    }
}

}  // namespace
