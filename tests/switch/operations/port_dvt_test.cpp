#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortDvt : public EnabledSwitch {};

TEST_F(PortDvt, Tests0And5FailBeforeTheSemaphoreIsTaken)
{
    for (const int test : {0, 5, -1, 260}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 2, test), -1);
        EXPECT_TRANSCRIPT("log1 ORBLINK_EnablePhyPortDvt:# Unknown DVT test: DvtTest " +
                          std::to_string(test));
    }
}

TEST_F(PortDvt, Tests1And4AreTaken)
{
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 2, 1), 0);
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 3, 4), 0);
    EXPECT_HALS("hal0 SetPhyPortDvt(0, 2, 1)", "hal0 SetPhyPortDvt(0, 3, 4)");
    EXPECT_EQ(record.dvtPorts, 0x0C);
}

TEST_F(PortDvt, CallsTheHalAgainOnAPortThatIsInDvtMode)
{
    ASSERT_EQ(ORBLINK_EnablePhyPortDvt(0, 2, 1), 0);
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 2, 1), 0);
    EXPECT_HALS("hal0 SetPhyPortDvt(0, 2, 1)", "hal0 SetPhyPortDvt(0, 2, 1)");
}

TEST_F(PortDvt, APortOutOfTheRecordCountsAsOneWithoutAPhy)
{
    for (const uint8_t port : {8, 31, 255}) {
        transcript.Clear();
        const std::string text = std::to_string(port);
        EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, port, 1), -1);
        EXPECT_EQ(ORBLINK_DisablePhyPortDvt(0, port), -1);
        EXPECT_LOGS(
            "log1 ORBLINK_EnablePhyPortDvt:# PhyPortIdx=" + text +
                " does not have PHY attached, DevIdx=0",
            "log1 ORBLINK_DisablePhyPortDvt:# Not a LAN port, DevIdx 0 , PhyPortIdx " + text);
    }
    EXPECT_HALS();
    EXPECT_EQ(record.dvtPorts, 0);
}

TEST_F(PortDvt, NeedsAPhyAndNoPortBelowTheNumberOfPorts)
{
    record.caps.numOfPorts = 2;
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 6, 1), 0);
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 0, 1), -1);
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 7, 1), -1);
    EXPECT_HALS("hal0 SetPhyPortDvt(0, 6, 1)");
    EXPECT_EQ(record.dvtPorts, 0x40);
}

TEST_F(PortDvt, EnablingLooksAtThePhyBeforeTheStateAndDisablingAtTheStateFirst)
{
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_EnablePhyPortDvt(0, 0, 1), -1);
    EXPECT_EQ(ORBLINK_DisablePhyPortDvt(0, 0), -1);
    EXPECT_LOGS("log1 ORBLINK_EnablePhyPortDvt:# PhyPortIdx=0 does not have PHY attached, DevIdx=0",
                "log1 ORBLINK_DisablePhyPortDvt:# Switch is not in enabled state, DevIdx=0");
}

TEST_F(PortDvt, EndingItOnAPortThatIsNotInItCallsTheHalAndRestoresThePort)
{
    config.link[2] = {OB_SPEED_10M, 0};
    config.eeePorts = 0;
    EXPECT_EQ(ORBLINK_DisablePhyPortDvt(0, 2), 0);
    EXPECT_HALS("hal0 SetPhyPortDvt(0, 2, 0)", "hal0 SetPhyPortSpeedDuplex(0, 2, 2, 0)",
                "hal0 DisablePhyPortEee(0, 2)");
}

TEST_F(PortDvt, EndsAlsoWhenThePortCannotBeRestored)
{
    record.dvtPorts = 0x0C;
    platform.FailSlot("SetPhyPortSpeedDuplex");
    EXPECT_EQ(ORBLINK_DisablePhyPortDvt(0, 2), -1);
    EXPECT_EQ(record.dvtPorts, 0x08);
    EXPECT_EQ(transcript.Log().back(),
              "log1 ORBLINK_DisablePhyPortDvt:# Failed restore port configuration, DevIdx=0 "
              "PhyPortIdx=2");
}

}  // namespace
