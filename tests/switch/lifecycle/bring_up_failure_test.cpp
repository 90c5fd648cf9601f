// Bring-up when a step fails: the message, the state that is left, the lock, no further step.
#include <cerrno>
#include <cstring>

#include "tests/switch/lifecycle/bring_up_fixture.h"

using namespace obtest;

namespace {

struct FailingStep {
    const char* name;
    void (*arrange)(ScriptedPlatform& platform);
    Lines complaints;
    std::string last;  // the last thing done to the platform or the chip
    uint32_t state;
};

const char* const kFailingAttribute =
    "sys fopen(/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset, w)";

// Fails one command of the chip and lets the other one pass.
void FailIoctl(ScriptedPlatform& platform, int command)
{
    platform.slots["VendorSpecificIoctl"] = [command](const SlotArgs& args) {
        return args[1] == command ? 5 : 0;
    };
}

class BringUpFailingStep : public BringUpTest, public testing::WithParamInterface<FailingStep> {};

TEST_P(BringUpFailingStep, TakesTheErrorExit)
{
    Init();
    Record(0).capsValid = 0;
    GetParam().arrange(platform);
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(Complaints(), GetParam().complaints);
    const Lines done = transcript.Only({"sys", "hal", "wait"});
    ASSERT_GE(done.size(), 2U);
    EXPECT_EQ(done[done.size() - 2], GetParam().last);
    EXPECT_EQ(Record(0).config.state, GetParam().state);
    ExpectErrorExit();
}

INSTANTIATE_TEST_SUITE_P(
    Steps, BringUpFailingStep,
    testing::ValuesIn(std::vector<FailingStep>{
        {"PreReset",
         [](ScriptedPlatform& platform) { FailIoctl(platform, 8); },
         {"log1 ORBLINK_ResetDisable:# Switch pre reset failed"},
         "hal0 VendorSpecificIoctl(0, 8, ptr)",
         0},
        {"PreResetSlotMissing",
         [](ScriptedPlatform&) { HalTable("a").VendorSpecificIoctl = nullptr; },
         {"log1 ORBLINK_ResetDisable:# Switch pre reset failed"},
         "sys semop(0, -1, UNDO)",
         0},
        {"BatteryMode",
         [](ScriptedPlatform& platform) { platform.systemState = "1\n"; },
         {"log2 ORBLINK_ResetDisable:# Modem in battery mode - skipping ResetDisable 0"},
         kSystemStateOpened,
         0},
        {"PinToZero",
         [](ScriptedPlatform& platform) { platform.Fail("fopen", EACCES, 2); },
         {std::string("log1 OBOS_SetGpioValue:# Failed to open attribute ") +
              "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset",
          "log1 ORBLINK_ResetDisable:# OBOS_SetGpioValue failed, pin=19, val=1, "
          "DevIdx=0"},
         kFailingAttribute,
         0},
        {"WriteOfThePinToZero",
         [](ScriptedPlatform& platform) { platform.Fail("fwrite", EIO); },
         {"log1 OBOS_SetGpioValue:# Failed to reset",
          "log1 ORBLINK_ResetDisable:# OBOS_SetGpioValue failed, pin=19, val=1, "
          "DevIdx=0"},
         "sys write(sgmii1_reset, \"0\")",
         0},
        {"PinToOne",
         [](ScriptedPlatform& platform) { platform.Fail("fopen", EACCES, 3); },
         {std::string("log1 OBOS_SetGpioValue:# Failed to open attribute ") +
              "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset",
          "log1 ORBLINK_ResetDisable:# OBOS_SetGpioValue failed, pin=19, val=1, "
          "DevIdx=0"},
         kFailingAttribute,
         0},
        {"ResetSwitch",
         [](ScriptedPlatform& platform) { platform.FailSlot("ResetSwitch"); },
         {"log1 ORBLINK_ResetDisable:# ResetSwitch failed, DevIdx=0"},
         "hal0 ResetSwitch(0, ptr, 8)",
         0},
        {"ResetSwitchSlotMissing",
         [](ScriptedPlatform&) { HalTable("a").ResetSwitch = nullptr; },
         {"log1 ORBLINK_ResetDisable:# ResetSwitch failed, DevIdx=0"},
         "wait sleep(3)",
         0},
        {"GetSwitchCaps",
         [](ScriptedPlatform& platform) { platform.FailSlot("GetSwitchCaps"); },
         {"log1 ORBLINK_ResetDisable:# GetSwitchCaps() failed, DevIdx=0"},
         "hal0 GetSwitchCaps(0, ptr)",
         2},
        {"RestoreConfig",
         [](ScriptedPlatform& platform) { platform.FailSlot("SetMacAging"); },
         {"log1 _RestoreConfig:# Set MAC aging failed, DevIdx=0",
          "log1 ORBLINK_ResetDisable:# Configuration restore failed, DevIdx=0"},
         "hal0 SetMacAging(0, 3)",
         2},
        {"OpenOfTheLaneDriver",
         [](ScriptedPlatform& platform) { platform.Fail("open", ENODEV); },
         {"log1 _ResetModphy:# open error, errno=" + std::to_string(ENODEV),
          "log1 ORBLINK_ResetDisable:# OBOS_ResetSerDes failed"},
         "sys open(/dev/modphy_drv, O_RDONLY)",
         2},
        {"LaneReset",
         [](ScriptedPlatform& platform) { platform.Fail("ioctl", EINVAL); },
         {"log1 _ResetModphy:# ioctl error, errno=" + std::to_string(EINVAL),
          "log1 ORBLINK_ResetDisable:# OBOS_ResetSerDes failed"},
         "sys close()",
         2},
        {"LaneThatDoesNotExist",
         [](ScriptedPlatform&) { Record(0).board.serdesId = 2; },
         {"log1 ORBLINK_ResetDisable:# OBOS_ResetSerDes failed"},
         "hal0 EnablePort(0, 7)",
         2},
        {"ReceiveReset",
         [](ScriptedPlatform& platform) { FailIoctl(platform, 3); },
         {"log1 ORBLINK_ResetDisable:# switch RX reset failed"},
         "hal0 VendorSpecificIoctl(0, 3, null)",
         2}}),
    [](const auto& info) { return info.param.name; });

class BringUpFailure : public BringUpTest {};

TEST_F(BringUpFailure, OfTheStoredConfigurationsValidityComesBeforeAnyHardwareAccess)
{
    Init(SwitchBoard::With({{}}), 0);
    uint8_t params[4] = {1, 2, 3, 4};
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, params, sizeof(params)), -1);
    EXPECT_EQ(Complaints(), Lines{"log1 ORBLINK_ResetDisable:# Cannot enable with the current "
                                  "configuration - it is not valid, DevIdx=0"});
    EXPECT_THAT(transcript.Only({"hal", "wait", "sys fopen"}), testing::IsEmpty());
    EXPECT_EQ(Region().vendor[0].vendorParamSize, 8U) << "nothing stored";
    ExpectErrorExit();
}

TEST_F(BringUpFailure, InBatteryModeLeavesTheRecordAsItWas)
{
    Init();
    platform.systemState = "2";
    const SwitchDeviceRegion before = Region();
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(memcmp(&before, &Region(), sizeof(before)), 0);
    EXPECT_HALS("hal0 VendorSpecificIoctl(0, 8, ptr)");
}

TEST_F(BringUpFailure, OfAPinThatTheBoardDoesNotKnow)
{
    Init(SwitchBoard::With({{.resetGpioPin = 17}}));
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(Complaints(),
              Lines({"log1 OBOS_SetGpioValue:# Unknown GPIO 17",
                     "log1 ORBLINK_ResetDisable:# OBOS_SetGpioValue failed, pin=17, val=1, "
                     "DevIdx=0"}));
    EXPECT_THAT(transcript.Only({"wait"}), testing::IsEmpty());
    ExpectErrorExit();
}

TEST_F(BringUpFailure, OfThePinToOneComesAfterTheFirstWaitAndBeforeTheSecond)
{
    Init();
    platform.Fail("fwrite", EIO, 2);
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(transcript.Only({"wait", "sys write"}),
              (Lines{"sys write(sgmii1_reset, \"0\")", "wait usleep(200000)",
                     "sys write(sgmii1_reset, \"1\")"}));
    EXPECT_EQ(transcript.Only({"log3"}),
              Lines{"log3 ORBLINK_ResetDisable:# OBOS_SetGpioValue done, pin=19, val=0, DevIdx 0"});
    ExpectErrorExit();
}

TEST_F(BringUpFailure, AfterTheChipsResetLeavesTheDefaultsWrittenAndTheSwitchEnabled)
{
    Init();
    Record(0).config.mtuSize = 1500;
    platform.FailSlot("DisablePort");
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(Record(0).config.mtuSize, 2000);
    EXPECT_EQ(Record(0).config.state, 2U);
    EXPECT_EQ(BringUp(1), 0) << "already enabled";
}

TEST_F(BringUpFailure, OfTheCapabilitiesLeavesThemInvalidAndLoadsNoDefaults)
{
    Init();
    Record(0).capsValid = 0;
    Record(0).config.mtuSize = 1500;
    platform.FailSlot("GetSwitchCaps");
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_EQ(Record(0).capsValid, 0);
    EXPECT_EQ(Record(0).config.mtuSize, 1500);
}

TEST_F(BringUpFailure, OfTheLaneLeavesTheReceivePathAndThePortsAlone)
{
    Init();
    platform.Fail("ioctl", EIO);
    EXPECT_EQ(BringUp(1), -1);
    EXPECT_FALSE(transcript.Has("VendorSpecificIoctl(0, 3"));
    EXPECT_FALSE(transcript.Has("SetPhyPortSpeedDuplex"));
    EXPECT_FALSE(transcript.Has("wait usleep(2000)"));
}

}  // namespace
