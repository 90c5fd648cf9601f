#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortTestMode : public EnabledSwitch {};

TEST_F(PortTestMode, NeedsAPhy)
{
    uint8_t mode = 0;
    EXPECT_EQ(ORBLINK_GetPortIEEETestMode(0, 0, &mode), -1);
    EXPECT_EQ(ORBLINK_SetPortIEEETestMode(0, 7, 1), -1);
    EXPECT_LOGS("log1 ORBLINK_GetPortIEEETestMode:# PortIdx=0 does not have PHY, DevIdx=0",
                "log1 ORBLINK_SetPortIEEETestMode:# PortIdx=7 does not have PHY, DevIdx=0");
    EXPECT_HALS();
}

TEST_F(PortTestMode, NeedsAPhyAlsoWhileTheSwitchIsNotEnabled)
{
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_SetPortIEEETestMode(0, 7, 1), -1);
}

TEST_F(PortTestMode, HandsTheCallersPointerToTheHal)
{
    uint8_t mode = 0;
    platform.slots["GetPortTestMode"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint8_t*>(args[2]) = 4;
        return 0;
    };
    EXPECT_EQ(ORBLINK_GetPortIEEETestMode(0, 2, &mode), 0);
    EXPECT_EQ(mode, 4);
    EXPECT_EQ(ORBLINK_SetPortIEEETestMode(0, 2, 255), 0);
    EXPECT_HALS("hal0 GetPortTestMode(0, 2, ptr)", "hal0 SetPortTestMode(0, 2, 255)");
}

TEST_F(PortTestMode, WithoutTheSlotNamesTheLibrary)
{
    HalTable("a").SetPortTestMode = nullptr;
    const std::string name(OB_HAL_NAME_SIZE, 'x');
    name.copy(record.board.halLibName, OB_HAL_NAME_SIZE);
    EXPECT_EQ(ORBLINK_SetPortIEEETestMode(0, 2, 1), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_SetPortIEEETestMode:# SetPortTestMode HAL does not exist for switch impl " +
        name + ", DevIdx=0");
}

TEST_F(PortTestMode, OnASwitchThatIsNotEnabledLeavesTheModeAlone)
{
    config.state = OB_STATE_RESET;
    uint8_t mode = 77;
    EXPECT_EQ(ORBLINK_GetPortIEEETestMode(0, 2, &mode), 0);
    EXPECT_EQ(mode, 77);
}

}  // namespace
