#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class RgmiiDelay : public EnabledSwitch {};

TEST_F(RgmiiDelay, NeedsAPortWithoutAPhy)
{
    record.caps.port[7].portHasPhy = 1;
    EXPECT_EQ(ORBLINK_EnableRgmiiDelay(0, 7), -1);
    EXPECT_EQ(ORBLINK_DisableRgmiiDelay(0, 7), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_EnableRgmiiDelay:# RgmiiPortIdx=7 has PHY or is not a RGMII, DevIdx=0",
        "log1 ORBLINK_DisableRgmiiDelay:# RgmiiPortIdx=7 has PHY or is not a RGMII, DevIdx=0");
    EXPECT_HALS();
    EXPECT_TRUE(transcript.Has("ORBLINK_EnableRgmiiDelay:# finished with error!"));
}

TEST_F(RgmiiDelay, NeedsAnRgmiiPort)
{
    for (const uint32_t type : {3U, 5U, 0x104U}) {
        record.caps.port[7].portIfaceType = type;
        EXPECT_EQ(ORBLINK_EnableRgmiiDelay(0, 7), -1) << type;
    }
    EXPECT_EQ(config.rgmiiDelayPorts, 0);
}

TEST_F(RgmiiDelay, NeedsAnRgmiiPortEvenForWhatIsStored)
{
    config.rgmiiDelayPorts = 0x04;
    EXPECT_EQ(ORBLINK_EnableRgmiiDelay(0, 2), -1);
    EXPECT_EQ(ORBLINK_DisableRgmiiDelay(0, 3), -1);
}

TEST_F(RgmiiDelay, ChangesItsOwnPortOnly)
{
    record.caps.port[0].portIfaceType = OB_IFACE_RGMII;
    config.rgmiiDelayPorts = 0x5A;
    EXPECT_EQ(ORBLINK_EnableRgmiiDelay(0, 7), 0);
    EXPECT_EQ(config.rgmiiDelayPorts, 0xDA);
    EXPECT_EQ(ORBLINK_EnableRgmiiDelay(0, 0), 0);
    EXPECT_EQ(config.rgmiiDelayPorts, 0xDB);
    EXPECT_EQ(ORBLINK_DisableRgmiiDelay(0, 7), 0);
    EXPECT_EQ(config.rgmiiDelayPorts, 0x5B);
}

}  // namespace
