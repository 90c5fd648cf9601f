#include "tests/switch/lifecycle/bring_up_fixture.h"

#include <algorithm>
#include <cstring>

using namespace obtest;
using testing::Each;
using testing::ElementsAre;

namespace {

const std::string kAttribute = "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset";

class BringUp : public BringUpTest {
protected:
    static Lines Opening(const std::string& configuration)
    {
        return {"log9 ORBLINK_ResetDisable:# --->",
                "log9 ORBLINK_ResetDisable:# DevIdx = 0, " + configuration + " configuration",
                "sys semop(0, -1, UNDO)", "hal0 VendorSpecificIoctl(0, 8, ptr)",
                kSystemStateOpened};
    }

    static Lines PinWritten(const std::string& value)
    {
        return {"sys fopen(" + kAttribute + ", w)",
                "log9 OBOS_SetGpioValue:# Reset attribute " + kAttribute,
                "sys write(sgmii1_reset, \"" + value + "\")"};
    }

    static Lines ResetPulse()
    {
        return PinWritten("0") +
               Lines{"log3 ORBLINK_ResetDisable:# OBOS_SetGpioValue done, pin=19, val=0, DevIdx 0",
                     "wait usleep(200000)"} +
               PinWritten("1") +
               Lines{"wait sleep(3)",
                     "log3 ORBLINK_ResetDisable:# OBOS_SetGpioValue done, pin=19, val=1, DevIdx=0"};
    }

    // What _RestoreConfig does on eight ports when every setting has its default.
    static Lines DefaultsRestored()
    {
        return Lines{"log3 _RestoreConfig:# DevIdx 0",
                     "log3 _RestoreConfig:# - Disable all ports so no traffic will flow in "
                     "unstable state"} +
               ForPorts(0, 7, {"hal0 DisablePort(0, @)", "log3 _RestoreConfig:# Disabled Port @"}) +
               Lines{"log3 _RestoreConfig:# Set VLAN mode",
                     "log3 _RestoreConfig:# Set VLAN mode done",
                     "log3 _RestoreConfig:# - Set VLAN-Port associations:"} +
               ForPorts(1, 7, {"log3 _RestoreConfig:# - Port @"}) +
               Lines{"log3 _RestoreConfig:# - Set VLAN-Port associations done",
                     "log3 _RestoreConfig:# Src MAC forwarding to VLAN",
                     "log3 _RestoreConfig:# Src MAC forwarding to VLAN done",
                     "log3 _RestoreConfig:# Set MAC aging",
                     "hal0 SetMacAging(0, 3)",
                     "log3 _RestoreConfig:# Done set MAC aging",
                     "log3 _RestoreConfig:# Set PHY properties"} +
               ForPorts(
                   1, 6,
                   {"log3 _RestoreConfig:# - Port @", "log3 _RestoreConfig:# - Port @ HasPhy"}) +
               Lines{"log3 _RestoreConfig:# - Port 7",
                     "log3 _RestoreConfig:# Set PHY properties done",
                     "log3 _RestoreConfig:# Set mirroring",
                     "log3 _RestoreConfig:# Set mirroring done",
                     "log3 _RestoreConfig:# Set RGMII delay",
                     "log3 _RestoreConfig:# Set RGMII delay done",
                     "log3 _RestoreConfig:# Set IGMP snooping ",
                     "log3 _RestoreConfig:# Set IGMP snooping done",
                     "log3 _RestoreConfig:# Set MTU size ",
                     "log3 _RestoreConfig:# Set LED config to 3",
                     "hal0 SetLEDConfig(0, 3)",
                     "log3 _RestoreConfig:# LED config set",
                     "log3 _RestoreConfig:# Enabling Ports: Mask 0xff"} +
               ForPorts(0, 7,
                        {"hal0 EnablePort(0, @)", "log3 _RestoreConfig:# EnablePort @ done"}) +
               Lines{"log3 _RestoreConfig:# Enabling Ports done: bitmap = 0xff"};
    }

    static Lines LaneReset(int client, const std::string& fast)
    {
        const std::string number = std::to_string(client);
        return {"log9 OBOS_ResetSerDes:# GmacIdx 1 Speed2_5 " + fast,
                "sys open(/dev/modphy_drv, O_RDONLY)",
                "log9 _ResetModphy:# open /dev/modphy_drv done",
                "sys ioctl(MODPHY_RESET_LANE, " + number + ")",
                "log9 _ResetModphy:# ioctl(MODPHY_RESET_LANE,  ClientId = " + number + ") done",
                "sys close()"};
    }

    static Lines ReceiveReset()
    {
        return {"wait usleep(2000)", "hal0 VendorSpecificIoctl(0, 3, null)"};
    }

    static Lines PortsRestored()
    {
        return ForPorts(1, 5,
                        {"hal0 SetPhyPortSpeedDuplex(0, @, 1, 1)", "hal0 EnablePhyPortEee(0, @)"}) +
               Lines{"hal0 SetPhyPortSpeedDuplex(0, 6, 1, 1)", "hal0 DisablePhyPortEee(0, 6)"};
    }

    static Lines Closing()
    {
        return {"sys semop(0, +1, UNDO)", "log9 ORBLINK_ResetDisable:# finished OK, DevIdx=0",
                "log9 ORBLINK_ResetDisable:# <---"};
    }
};

TEST_F(BringUp, FromDefaultsAsOneTranscript)
{
    Init();
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(transcript.All(), Opening("Set default") + ResetPulse() +
                                    Lines{"hal0 ResetSwitch(0, ptr, 8)"} + DefaultsRestored() +
                                    LaneReset(6, "True") + ReceiveReset() + PortsRestored() +
                                    Closing());
    EXPECT_EQ(Record(0).config.state, 2U);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(BringUp, FromStoredSettingsReadsTheCapabilitiesOfAChipNotYetAsked)
{
    Init(SwitchBoard::With({{.halLibName = "liborblink_second.so", .ifaceMode = OB_IFACE_SGMII}}));
    platform.libraries["liborblink_second.so"] = "b";
    Record(0).capsValid = 0;
    memset(&Record(0).caps, 0, sizeof(SwitchCaps));
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
    Lines expected = Opening("Restore") + ResetPulse() +
                     Lines{"hal0 ResetSwitch(0, null, 0)", "hal0 GetSwitchCaps(0, ptr)"} +
                     DefaultsRestored() + LaneReset(4, "False") + PortsRestored() + Closing();
    for (auto& line : expected)
        if (line.rfind("hal0", 0) == 0)
            line[3] = '1';
    EXPECT_EQ(transcript.All(), expected);
    EXPECT_EQ(Record(0).capsValid, 1);
    EXPECT_EQ(Record(0).caps.numOfPorts, 8);
}

TEST_F(BringUp, HoldsTheLockFromThePrologToTheEnd)
{
    Init();
    std::vector<int> whileHeld;
    bool held = false;
    transcript.watch = [&](const std::string& line) {
        if (held)
            whileHeld.push_back(SemaphoreValue());
        held = line == "sys semop(0, -1, UNDO)" || (held && line != "sys semop(0, +1, UNDO)");
    };
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    transcript.watch = nullptr;
    EXPECT_GT(whileHeld.size(), 60U);
    EXPECT_THAT(whileHeld, Each(0));
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(BringUp, OfAnEnabledSwitchTouchesNothing)
{
    InitEnabled();
    const SwitchDeviceRegion before = Region();
    uint8_t params[33] = {1};
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, params, sizeof(params)), 0);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetDisable:# --->",
                      "log9 ORBLINK_ResetDisable:# DevIdx = 0, Set default configuration",
                      "sys semop(0, -1, UNDO)",
                      "log2 ORBLINK_ResetDisable:# Switch is already enabled, DevIdx=0",
                      "sys semop(0, +1, UNDO)", "log9 ORBLINK_ResetDisable:# finished OK, DevIdx=0",
                      "log9 ORBLINK_ResetDisable:# <---");
    EXPECT_EQ(memcmp(&before, &Region(), sizeof(before)), 0);
}

TEST_F(BringUp, OfASwitchInAnyOtherStateGoesAhead)
{
    Init();
    for (uint32_t state : {0U, 1U, 3U, 0xFFFFFFFFU}) {
        Record(0).config.state = state;
        EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
        EXPECT_EQ(Record(0).config.state, 2U);
    }
}

TEST_F(BringUp, OfAnUnknownSwitchTakesTheErrorExit)
{
    Init();
    EXPECT_EQ(ORBLINK_ResetDisable(1, 0, nullptr, 0), -1);
    EXPECT_TRANSCRIPT(
        "log9 ORBLINK_ResetDisable:# --->",
        "log9 ORBLINK_ResetDisable:# DevIdx = 1, Restore configuration", "sys semop(0, -1, UNDO)",
        "log1 ORBLINK_ResetDisable:# Invalid device index, DevIdx=1", "sys semop(0, +1, UNDO)",
        "log9 ORBLINK_ResetDisable:# finished with error!, DevIdx=1",
        "log9 ORBLINK_ResetDisable:# <---");
}

TEST_F(BringUp, WithoutPrologLogsNoFinishedLine)
{
    Init();
    platform.Fail("semop", 43);
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetDisable:# --->",
                      "log9 ORBLINK_ResetDisable:# DevIdx = 0, Restore configuration",
                      "sys semop(0, -1, UNDO)", "log1 _System5SemOp:# semop() fail, errno=43",
                      "log1 _ApiProlog:# _ApiGlobalLock() failed",
                      "log1 ORBLINK_ResetDisable:# _ApiProlog() failed, DevIdx=0",
                      "log9 ORBLINK_ResetDisable:# <---");
}

TEST_F(BringUp, OfTheSecondSwitchUsesItsOwnRecordAndWiring)
{
    Init(SwitchBoard::With({{}, {.serdesId = 0, .resetGpioPin = 18}}));
    Record(1).config.macAging = 5;
    EXPECT_EQ(ORBLINK_ResetDisable(1, 0, nullptr, 0), 0);
    EXPECT_TRUE(transcript.Has("sys write(sgmii0_reset, \"0\")"));
    EXPECT_TRUE(transcript.Has("hal0 SetMacAging(1, 5)"));
    EXPECT_TRUE(transcript.Has("sys ioctl(MODPHY_RESET_LANE, 5)"));
    EXPECT_EQ(Record(0).config.state, 0U);
    EXPECT_EQ(Record(1).config.state, 2U);
}

TEST_F(BringUp, SendsThePreResetCommandWithTheLowBytesOfTheBoardData)
{
    std::vector<uint8_t> payload;
    platform.slots["VendorSpecificIoctl"] = [&](const SlotArgs& args) {
        if (args[1] == 8) {
            const auto* bytes = reinterpret_cast<const uint8_t*>(args[2]);
            payload.assign(bytes, bytes + 2);
        }
        return 0;
    };
    Init(SwitchBoard::With({{.serdesId = 0x101, .preResetArg = 0xABCD}}));
    ORBLINK_ResetDisable(0, 1, nullptr, 0);
    EXPECT_THAT(payload, ElementsAre(0x01, 0xCD));
}

TEST_F(BringUp, WithoutAResetPinSkipsThePulseAndItsWaits)
{
    Init(SwitchBoard::With({{.resetGpioPin = 0xFFFFFFFF}}));
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    const Lines& all = transcript.All();
    const Lines skipped = {kSystemStateOpened,
                           "log2 ORBLINK_ResetDisable:# No hardware-reseting GPIO pin defined, "
                           "skipping, DevIdx=0",
                           "hal0 ResetSwitch(0, ptr, 8)"};
    EXPECT_NE(std::search(all.begin(), all.end(), skipped.begin(), skipped.end()), all.end());
    EXPECT_EQ(transcript.Only({"wait"}), (Lines{"wait usleep(2000)"}));
}

TEST_F(BringUp, ResetsTheReceivePathOnlyWhereTheRecordHoldsExactlyOne)
{
    Init();
    for (uint32_t mark : {0U, 2U, 0xFFFFFFFFU}) {
        transcript.Clear();
        Record(0).config.state = 1;
        Record(0).rxResetAfterSerdes = mark;
        EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
        EXPECT_FALSE(transcript.Has("VendorSpecificIoctl(0, 3"));
        EXPECT_FALSE(transcript.Has("wait usleep(2000)"));
    }
}

TEST_F(BringUp, ResetsAFastLaneForHsgmiiOnly)
{
    Init();
    for (uint32_t mode = 0; mode < 9; ++mode) {
        transcript.Clear();
        Record(0).config.state = 1;
        Record(0).board.internalPortIfaceMode = mode;
        ORBLINK_ResetDisable(0, 0, nullptr, 0);
        EXPECT_EQ(transcript.Has("sys ioctl(MODPHY_RESET_LANE, 6)"), mode == 6) << mode;
        EXPECT_EQ(transcript.Has("sys ioctl(MODPHY_RESET_LANE, 4)"), mode != 6) << mode;
    }
}

TEST_F(BringUp, ReadsTheCapabilitiesOnlyWhileTheyAreNotValid)
{
    Init();
    Record(0).capsValid = 7;
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
    EXPECT_FALSE(transcript.Has("GetSwitchCaps"));
    EXPECT_EQ(Record(0).capsValid, 7);
}

TEST_F(BringUp, WaitsForTheRestAfterASignalHasCutAWaitShort)
{
    Init();
    platform.FailEach("usleep", EINTR, 3);
    platform.Fail("sleep", EINTR, 1, 2);
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    const auto pulse = testing::MatchesRegex(R"(wait usleep\(1[0-9]{5}\))");
    const auto start = testing::MatchesRegex(R"(wait usleep\(29[0-9]{5}\))");
    EXPECT_THAT(transcript.Only({"wait"}),
                testing::ElementsAre("wait usleep(200000)", pulse, pulse, pulse, "wait sleep(3)",
                                     start, "wait usleep(2000)"));
}

TEST_F(BringUp, DoesNotRepeatAWaitThatFailsForAnotherReason)
{
    Init();
    platform.FailEach("usleep", EINVAL);
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(transcript.Only({"wait"}),
              (Lines{"wait usleep(200000)", "wait sleep(3)", "wait usleep(2000)"}));
}

}  // namespace
