#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortSpeed : public EnabledSwitch {};

TEST_F(PortSpeed, NeedsAPhy)
{
    for (const uint8_t port : {0, 7}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, port, OB_SPEED_1G, 1), -1);
        EXPECT_LOGS("log1 ORBLINK_SetPhyPortSpeedDuplex:# PhyPortIdx=" + std::to_string(port) +
                    " does not have PHY attached, DevIdx=0");
        EXPECT_HALS();
    }
}

TEST_F(PortSpeed, NeedsAPhyEvenForWhatIsStored)
{
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 0, OB_SPEED_AUTONEG, 1), -1);
}

TEST_F(PortSpeed, AnyNonZeroPhyMarkCounts)
{
    record.caps.port[7].portHasPhy = 0x100;
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 7, OB_SPEED_1G, 1), 0);
    EXPECT_HALS("hal0 SetPhyPortSpeedDuplex(0, 7, 4, 1)");
}

TEST_F(PortSpeed, IsRefusedOnAPortThatIsNotEnabled)
{
    config.enabledPorts = 0xFB;
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_1G, 0), -1);
    EXPECT_LOGS(
        "log2 ORBLINK_SetPhyPortSpeedDuplex:# Invalid operation, DevIdx=0,PhyPortIdx=2 had been "
        "disable");
    EXPECT_HALS();
    EXPECT_EQ(config.link[2].linkSpeed, OB_SPEED_AUTONEG + 0U);
}

TEST_F(PortSpeed, IsRefusedOnAPortThatIsNotEnabledAlsoWhileTheSwitchIsNot)
{
    config.enabledPorts = 0xFB;
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_1G, 0), -1);
    EXPECT_EQ(config.link[2].linkSpeed, OB_SPEED_AUTONEG + 0U);
}

TEST_F(PortSpeed, ThatIsStoredSucceedsAlsoOnAPortThatIsNotEnabled)
{
    config.enabledPorts = 0;
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_AUTONEG, 1), 0);
    EXPECT_LOGS(
        "log2 ORBLINK_SetPhyPortSpeedDuplex:# PhyPortIdx=2 link is already in desired speed=1 and "
        "duplex=1 modes, DevIdx=0");
}

TEST_F(PortSpeed, ADifferenceInEitherValueIsSent)
{
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_AUTONEG, 0), 0);
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_10M, 0), 0);
    EXPECT_HALS("hal0 SetPhyPortSpeedDuplex(0, 2, 1, 0)", "hal0 SetPhyPortSpeedDuplex(0, 2, 2, 0)");
}

TEST_F(PortSpeed, AnyCodeGoesToTheHal)
{
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, 0xFFFFFFFFU, 0xFFFFFFFFU), 0);
    EXPECT_HALS("hal0 SetPhyPortSpeedDuplex(0, 2, 4294967295, 4294967295)");
    EXPECT_EQ(config.link[2].linkSpeed, 0xFFFFFFFFU);
    EXPECT_EQ(config.link[2].linkFullDuplex, 0xFFFFFFFFU);
}

TEST_F(PortSpeed, InDvtModeIsNotedAndGoesOn)
{
    record.dvtPorts = 0x04;
    const std::string note =
        "log2 ORBLINK_SetPhyPortSpeedDuplex:# DevIdx=0 PhyPortIdx=2 is in DVT mode";
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_1G, 1), 0);
    EXPECT_TRANSCRIPT(
        "log9 ORBLINK_SetPhyPortSpeedDuplex:# PhyPortIdx=2, PhySpeed=4, LinkSpeed=1, FullDp=1",
        "sys semop(0, -1, UNDO)", note, "hal0 SetPhyPortSpeedDuplex(0, 2, 4, 1)",
        "sys semop(0, +1, UNDO)");
    transcript.Clear();
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_1G, 1), 0);
    EXPECT_LOGS(note,
                "log2 ORBLINK_SetPhyPortSpeedDuplex:# PhyPortIdx=2 link is already in desired "
                "speed=4 and duplex=1 modes, DevIdx=0");
    EXPECT_EQ(record.dvtPorts, 0x04);
}

TEST_F(PortSpeed, AnotherPortInDvtModeIsNotNoted)
{
    record.dvtPorts = 0xFB;
    EXPECT_EQ(ORBLINK_SetPhyPortSpeedDuplex(0, 2, OB_SPEED_1G, 1), 0);
    EXPECT_LOGS();
}

}  // namespace
