#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class MtuSize : public EnabledSwitch {};

TEST_F(MtuSize, HasNoRangeAndNoShortCut)
{
    for (const uint16_t mtu : {0, 2000, 2000, 65535}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetMtuSize(0, mtu), 0);
        EXPECT_HALS("hal0 SetMtuSize(0, " + std::to_string(mtu) + ")");
        EXPECT_EQ(config.mtuSize, mtu);
    }
}

TEST_F(MtuSize, PrintsDeviceAndValueWithTheirOwnConversions)
{
    const auto lastFormat = [this] { return transcript.Formats().back(); };
    platform.Fail("semop", 0);
    EXPECT_EQ(ORBLINK_SetMtuSize(0, 1500), -1);
    EXPECT_EQ(lastFormat(), "%s:%d _ApiProlog() failed, DevIdx=%hhu");
    EXPECT_EQ(ORBLINK_SetMtuSize(1, 1500), -1);
    EXPECT_EQ(lastFormat(), "%s:%d Invalid device index, DevIdx=%hhu");
    platform.FailSlot("SetMtuSize");
    EXPECT_EQ(ORBLINK_SetMtuSize(0, 1500), -1);
    EXPECT_EQ(lastFormat(), "%s:%d SetMtuSize failed, Val=%hu, DevIdx=%hhu");
    config.state = 0;
    EXPECT_EQ(ORBLINK_SetMtuSize(0, 1500), -1);
    EXPECT_EQ(lastFormat(), "%s:%d Switch is not in enabled state, DevIdx=%hhu");
    EXPECT_EQ(config.mtuSize, 2000);
}

}  // namespace
