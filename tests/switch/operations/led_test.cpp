#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;
using testing::Contains;

namespace {

class LedConfig : public EnabledSwitch {};

TEST_F(LedConfig, ReadsTheModeThatTheChipUsesAndNotesADifference)
{
    platform.slots["GetLEDConfig"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint8_t*>(args[1]) = 200;
        return 0;
    };
    uint8_t mode = 3;
    EXPECT_EQ(ORBLINK_GetLEDConfig(0, &mode), 0);
    EXPECT_EQ(mode, 200);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetLEDConfig:# GetLEDConfig dev=0", "sys semop(0, -1, UNDO)",
                      "hal0 GetLEDConfig(0, ptr)",
                      "log2 ORBLINK_GetLEDConfig:# LED config provisioned mode is 3 but actual "
                      "mode is 200",
                      "sys semop(0, +1, UNDO)", "log9 ORBLINK_GetLEDConfig:# finished OK");
    EXPECT_THAT(transcript.Formats(),
                Contains("%s:%d LED config provisioned mode is %u but actual mode is %u"));
    EXPECT_EQ(config.ledMode, 3);
}

TEST_F(LedConfig, OnASwitchThatIsNotEnabledComparesTheCallersByte)
{
    config.state = 0;
    uint8_t mode = 9;
    EXPECT_EQ(ORBLINK_GetLEDConfig(0, &mode), 0);
    EXPECT_EQ(mode, 9);
    EXPECT_LOGS(
        "log2 ORBLINK_GetLEDConfig:# LED config provisioned mode is 3 but actual mode is 9");
    EXPECT_HALS();
    mode = 3;
    transcript.Clear();
    EXPECT_EQ(ORBLINK_GetLEDConfig(0, &mode), 0);
    EXPECT_LOGS();
}

TEST_F(LedConfig, AFailedReadIsNotCompared)
{
    platform.FailSlot("GetLEDConfig");
    uint8_t mode = 9;
    EXPECT_EQ(ORBLINK_GetLEDConfig(0, &mode), -1);
    EXPECT_LOGS("log1 ORBLINK_GetLEDConfig:# GetLEDConfig failed, DevIdx=0");
}

TEST_F(LedConfig, IsNotReadIntoANullPointer)
{
    EXPECT_EQ(ORBLINK_GetLEDConfig(0, nullptr), -1);
    EXPECT_EQ(transcript.Log().size(), 1U);
    EXPECT_THAT(transcript.Only({"hal", "sys"}), testing::IsEmpty());
}

TEST_F(LedConfig, IsSentAlsoWhenItIsStored)
{
    EXPECT_EQ(ORBLINK_SetLEDConfig(0, 3), 0);
    EXPECT_HALS("hal0 SetLEDConfig(0, 3)");
}

}  // namespace
