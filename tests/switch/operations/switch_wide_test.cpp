// Snooping, registers, MTU, ageing and LED mode.
#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;
using testing::Contains;
using testing::ElementsAre;

namespace {

class IgmpSnooping : public EnabledSwitch {};
class Registers : public EnabledSwitch {};
class MtuSize : public EnabledSwitch {};
class MacAging : public EnabledSwitch {};
class LedConfig : public EnabledSwitch {};

TEST_F(IgmpSnooping, IsRefusedByASwitchWithoutItEvenForWhatIsStored)
{
    record.caps.capsFlags = OB_CAPS_NO_SNOOPING;
    for (const uint32_t stored : {0U, 1U, 2U}) {
        config.igmpSnooping = stored;
        transcript.Clear();
        EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), -1);
        EXPECT_EQ(ORBLINK_DisableIgmpSnooping(0), -1);
        EXPECT_LOGS(
            "log1 ORBLINK_EnableIgmpSnooping:# Switch does not support IGMP/MLD snooping, DevIdx=0",
            "log1 ORBLINK_DisableIgmpSnooping:# Switch does not support IGMP/MLD snooping, "
            "DevIdx=0");
        EXPECT_EQ(config.igmpSnooping, stored);
    }
    EXPECT_HALS();
}

TEST_F(IgmpSnooping, AnyStoredValueButOneCountsAsDisabled)
{
    config.igmpSnooping = 2;
    EXPECT_EQ(ORBLINK_DisableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 2U);
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 1U);
    EXPECT_HALS("hal0 EnableIgmpSnooping(0)");
}

TEST_F(IgmpSnooping, OnASwitchThatIsNotEnabledIsStoredAndThenFound)
{
    config.state = 0;
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 1U);
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_LOGS("log2 ORBLINK_EnableIgmpSnooping:# IGMP/MLD Snooping is already enabled, DevIdx=0");
}

TEST_F(Registers, TakeAnyPortAndHandTheCallersPointerOn)
{
    platform.slots["ReadPortReg"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint16_t*>(args[3]) = 0xBEEF;
        return 0;
    };
    platform.slots["SmiRead"] = [](const SlotArgs& args) {
        *reinterpret_cast<uint16_t*>(args[2]) = 0xCAFE;
        return 0;
    };
    uint16_t value = 0;
    EXPECT_EQ(ORBLINK_ReadPortReg(0, 65535, 0, &value), 0);
    EXPECT_EQ(value, 0xBEEF);
    EXPECT_EQ(ORBLINK_SmiRead(0, 0, &value), 0);
    EXPECT_EQ(value, 0xCAFE);
    EXPECT_EQ(ORBLINK_WritePortReg(0, 255, 0, 0), 0);
    EXPECT_EQ(ORBLINK_SetPortFc(0, 255, 0, 0), 0);
}

TEST_F(Registers, AVendorIoctlPassesItsParameterUnexamined)
{
    uint32_t parameter = 5;
    platform.slots["VendorSpecificIoctl"] = [&](const SlotArgs& args) {
        EXPECT_EQ(args[2], reinterpret_cast<intptr_t>(&parameter));
        return 1;
    };
    char address[24];
    snprintf(address, sizeof(address), "0x%08lX", reinterpret_cast<unsigned long>(&parameter));
    EXPECT_EQ(ORBLINK_VendorSpecificIoctl(0, 0x7FFFFFFF, &parameter), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_VendorSpecificIoctl:# DevIdx=0, Cmd=2147483647 pParam=" +
                          std::string(address),
                      "sys semop(0, -1, UNDO)", "hal0 VendorSpecificIoctl(0, 2147483647, ptr)",
                      "log1 ORBLINK_VendorSpecificIoctl:# ioctl failed, DevIdx=0, Cmd=2147483647 "
                      "pParam=" +
                          std::string(address),
                      "sys semop(0, +1, UNDO)");
}

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

TEST_F(MacAging, Steps0And6FailBeforeTheSemaphoreIsTaken)
{
    for (const int step : {0, 6, -1, 0x101}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetMacAging(0, step), -1);
        const std::string text = std::to_string(step);
        EXPECT_TRANSCRIPT("log9 ORBLINK_SetMacAging:# DevIdx=0, Aging=" + text,
                          "log1 ORBLINK_SetMacAging:# Wrong Aging " + text);
    }
    EXPECT_EQ(config.macAging, 3U);
}

TEST_F(MacAging, Steps1To5AreTakenWithoutAShortCut)
{
    for (const int step : {1, 2, 3, 3, 4, 5}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetMacAging(0, step), 0);
        EXPECT_HALS("hal0 SetMacAging(0, " + std::to_string(step) + ")");
        EXPECT_EQ(config.macAging, static_cast<uint32_t>(step));
    }
}

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
    EXPECT_THAT(transcript.Only({"hal", "sys"}), ElementsAre());
}

TEST_F(LedConfig, IsSentAlsoWhenItIsStored)
{
    EXPECT_EQ(ORBLINK_SetLEDConfig(0, 3), 0);
    EXPECT_HALS("hal0 SetLEDConfig(0, 3)");
}

}  // namespace
