// The stored configuration as bring-up replays it: what is sent, in which order, what is left out.
#include <algorithm>
#include <cstring>

#include "tests/switch/lifecycle/bring_up_fixture.h"

using namespace obtest;

namespace {

Lines Restored(const Lines& messages)
{
    Lines lines;
    for (const auto& text : messages)
        lines.push_back(text.rfind("hal", 0) == 0 ? text : "log3 _RestoreConfig:# " + text);
    return lines;
}

struct Setting {
    const char* name;
    void (*change)(SwitchProvConfig& config);
    std::string first, last;  // the step's first and last message
    Lines between;            // what the step sends and says in between
};

class RestoreSetting : public BringUpTest, public testing::WithParamInterface<Setting> {};

TEST_P(RestoreSetting, SendsWhatDiffersFromTheDefault)
{
    Init();
    GetParam().change(Record(0).config);
    EXPECT_EQ(BringUp(), 0);
    const Setting& setting = GetParam();
    EXPECT_EQ(
        Between("log3 _RestoreConfig:# " + setting.first, "log3 _RestoreConfig:# " + setting.last),
        Restored(Lines{setting.first} + setting.between + Lines{setting.last}));
}

using Config = SwitchProvConfig;

INSTANTIATE_TEST_SUITE_P(
    Step, RestoreSetting,
    testing::ValuesIn(std::vector<Setting>{
        {"ProviderBridgedModeOn",
         [](Config& c) {
             c.InProviderBridgedMode = 1;
             c.STagTpid = 0x88A8;
         },
         "Set VLAN mode",
         "Set VLAN mode done",
         {"InProviderBridgedMode != ORBLINK_DEF_PBM", "InProviderBridgedMode == True",
          "hal0 EnableProviderBridgedMode(0, 34984)", "- EnableProviderBridgedMode 34984 done"}},
        {"ProviderBridgedModeOff",
         [](Config& c) { c.InProviderBridgedMode = 2; },
         "Set VLAN mode",
         "Set VLAN mode done",
         {"InProviderBridgedMode != ORBLINK_DEF_PBM", "hal0 DisableProviderBridgedMode(0)",
          "DisableProviderBridgedMode done"}},
        {"ProviderBridgedModeAnyOtherValue",
         [](Config& c) { c.InProviderBridgedMode = 0xFFFFFFFF; },
         "Set VLAN mode",
         "Set VLAN mode done",
         {"InProviderBridgedMode != ORBLINK_DEF_PBM", "hal0 DisableProviderBridgedMode(0)",
          "DisableProviderBridgedMode done"}},
        {"GroupOfPort2",
         [](Config& c) { c.groupId[2] = 0; },
         "- Port 2",
         "- Port 3",
         {"hal0 SetLanPortGroupId(0, 2, 0)", "SetLanPortGroupId done, PortIdx=2, GroupId=0"}},
        {"VlanOfPort1",
         [](Config& c) { c.lanPortVlan[1] = 4094; },
         "- Port 1",
         "- Port 2",
         {"hal0 SetLanPortVlan(0, 1, 4094)", "SetLanPortVlan done, PortIdx=1, Vlan=4094"}},
        {"PcpOfPort3",
         [](Config& c) { c.lanPortPcp[3] = 7; },
         "- Port 3",
         "- Port 4",
         {"hal0 SetLanPortPcp(0, 3, 7)", "SetLanPortPcp done, PortIdx=3, PCP=7"}},
        {"TaggingOfPort6",
         [](Config& c) { c.egressTagging[6] = 1; },
         "- Port 6",
         "- Port 7",
         {"hal0 SetLanPortEgressTagging(0, 6, 1)",
          "SetLanPortEgressTagging done, PortIdx=6, EgressTagging=1"}},
        {"EverythingOfPort4InOrder",
         [](Config& c) {
             c.egressTagging[4] = 1;
             c.lanPortPcp[4] = 5;
             c.lanPortVlan[4] = 100;
             c.groupId[4] = 3;
         },
         "- Port 4",
         "- Port 5",
         {"hal0 SetLanPortGroupId(0, 4, 3)", "SetLanPortGroupId done, PortIdx=4, GroupId=3",
          "hal0 SetLanPortVlan(0, 4, 100)", "SetLanPortVlan done, PortIdx=4, Vlan=100",
          "hal0 SetLanPortPcp(0, 4, 5)", "SetLanPortPcp done, PortIdx=4, PCP=5",
          "hal0 SetLanPortEgressTagging(0, 4, 1)",
          "SetLanPortEgressTagging done, PortIdx=4, EgressTagging=1"}},
        {"MacToVlanEntriesInIndexOrder",
         [](Config& c) {
             c.macToVlanTable[31] = {300, {1, 2, 3, 4, 5, 6}, 0xFFF, 7, 0, 1};
             c.macToVlanTable[0] = {4094, {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}, 0, 1, 0, 0x100};
             c.macToVlanTable[5] = {9, {9, 9, 9, 9, 9, 9}, 9, 9, 0, 0};
         },
         "Src MAC forwarding to VLAN",
         "Src MAC forwarding to VLAN done",
         {"hal0 MapSetMacToVlan(0, 1, AA:BB:CC:DD:EE:FF, 0, 4094, 1)",
          "hal0 MapSetMacToVlan(0, 7, 01:02:03:04:05:06, 4095, 300, 1)"}},
        {"MacAgingAlways",
         [](Config& c) { c.macAging = 0; },
         "Set MAC aging",
         "Done set MAC aging",
         {"hal0 SetMacAging(0, 0)"}},
        {"SpeedOfPort5",
         [](Config& c) { c.link[5].linkSpeed = 4; },
         "- Port 5 HasPhy",
         "- Port 6",
         {"hal0 SetPhyPortSpeedDuplex(0, 5, 4, 1)",
          "SetPhyPortSpeedDuplex done, Port=5, Speed=4, Duplex=1"}},
        {"DuplexOfPort5",
         [](Config& c) { c.link[5].linkFullDuplex = 0; },
         "- Port 5 HasPhy",
         "- Port 6",
         {"hal0 SetPhyPortSpeedDuplex(0, 5, 1, 0)",
          "SetPhyPortSpeedDuplex done, Port=5, Speed=1, Duplex=0"}},
        {"DuplexThatIsNeither0Nor1",
         [](Config& c) { c.link[5].linkFullDuplex = 2; },
         "- Port 5 HasPhy",
         "- Port 6",
         {"hal0 SetPhyPortSpeedDuplex(0, 5, 1, 2)",
          "SetPhyPortSpeedDuplex done, Port=5, Speed=1, Duplex=2"}},
        {"MirroringOfAnyPort",
         [](Config& c) {
             c.mirrorDst[0] = 7;
             c.mirrorDst[7] = 0;
         },
         "Set mirroring",
         "Set mirroring done",
         {"hal0 SetPortMirror(0, 0, 7)", "SetPortMirror done, SrcPortIdx=0, DstPortInd=7",
          "hal0 SetPortMirror(0, 7, 0)", "SetPortMirror done, SrcPortIdx=7, DstPortInd=0"}},
        {"RgmiiDelayOfAnyPort",
         [](Config& c) { c.rgmiiDelayPorts = 0x81; },
         "Set RGMII delay",
         "Set RGMII delay done",
         {"hal0 EnableRgmiiDelay(0, 0)", "EnableRgmiiDelay done, PortIdx=0",
          "hal0 EnableRgmiiDelay(0, 7)", "EnableRgmiiDelay done, PortIdx=7"}},
        {"SnoopingOn",
         [](Config& c) { c.igmpSnooping = 1; },
         "Set IGMP snooping ",
         "Set IGMP snooping done",
         {"hal0 EnableIgmpSnooping(0)", "EnableIgmpSnooping done"}},
        {"SnoopingOff",
         [](Config& c) { c.igmpSnooping = 2; },
         "Set IGMP snooping ",
         "Set IGMP snooping done",
         {"hal0 DisableIgmpSnooping(0)", "DisableIgmpSnooping done"}},
        {"Mtu",
         [](Config& c) { c.mtuSize = 1999; },
         "Set MTU size ",
         "Set MTU size done",
         {"hal0 SetMtuSize(0, 1999)"}},
        {"LedMode",
         [](Config& c) { c.ledMode = 255; },
         "Set LED config to 255",
         "LED config set",
         {"hal0 SetLEDConfig(0, 255)"}},
        {"NoPort",
         [](Config& c) { c.enabledPorts = 0; },
         "Enabling Ports: Mask 0x0",
         "Enabling Ports done: bitmap = 0x0",
         {}},
        {"SomePorts",
         [](Config& c) { c.enabledPorts = 0xA1; },
         "Enabling Ports: Mask 0xa1",
         "Enabling Ports done: bitmap = 0xa1",
         {"hal0 EnablePort(0, 0)", "EnablePort 0 done", "hal0 EnablePort(0, 5)",
          "EnablePort 5 done", "hal0 EnablePort(0, 7)", "EnablePort 7 done"}}}),
    [](const auto& info) { return info.param.name; });

class RestoreConfig : public BringUpTest {
protected:
    // Every setting of every port and of the switch differs from its default.
    static void ChangeEverything(SwitchProvConfig& config)
    {
        config.InProviderBridgedMode = 1;
        for (int port = 0; port < OB_MAX_PORTS; ++port) {
            config.groupId[port] = port;
            config.lanPortVlan[port] = static_cast<uint16_t>(100 + port);
            config.lanPortPcp[port] = 1;
            config.egressTagging[port] = 1;
            config.link[port] = {4, 0};
            config.mirrorDst[port] = 7;
        }
        config.rgmiiDelayPorts = 0xFF;
        config.igmpSnooping = 1;
        config.mtuSize = 1500;
        config.ledMode = 1;
        config.macAging = 1;
        config.macToVlanTable[3] = {5, {2, 2, 2, 2, 2, 2}, 0xFFF, 1, 0, 1};
    }
};

TEST_F(RestoreConfig, SendsEverySettingInTheFixedOrder)
{
    platform.slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        SwitchCaps caps = {};
        caps.numOfPorts = 3;
        caps.port[0].portHasPhy = 1;
        caps.port[1].portHasPhy = 1;
        memcpy(reinterpret_cast<void*>(args[1]), &caps, sizeof(caps));
        return 0;
    };
    Init();
    ChangeEverything(Record(0).config);
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(RestoreCalls(), (Lines{"hal0 DisablePort(0, 0)",
                                     "hal0 DisablePort(0, 1)",
                                     "hal0 DisablePort(0, 2)",
                                     "hal0 EnableProviderBridgedMode(0, 33024)",
                                     "hal0 SetLanPortGroupId(0, 1, 1)",
                                     "hal0 SetLanPortVlan(0, 1, 101)",
                                     "hal0 SetLanPortPcp(0, 1, 1)",
                                     "hal0 SetLanPortEgressTagging(0, 1, 1)",
                                     "hal0 MapSetMacToVlan(0, 1, 02:02:02:02:02:02, 4095, 5, 1)",
                                     "hal0 SetMacAging(0, 1)",
                                     "hal0 SetPhyPortSpeedDuplex(0, 1, 4, 0)",
                                     "hal0 SetPortMirror(0, 0, 7)",
                                     "hal0 SetPortMirror(0, 1, 7)",
                                     "hal0 SetPortMirror(0, 2, 7)",
                                     "hal0 EnableRgmiiDelay(0, 0)",
                                     "hal0 EnableRgmiiDelay(0, 1)",
                                     "hal0 EnableRgmiiDelay(0, 2)",
                                     "hal0 EnableIgmpSnooping(0)",
                                     "hal0 SetMtuSize(0, 1500)",
                                     "hal0 SetLEDConfig(0, 1)",
                                     "hal0 EnablePort(0, 0)",
                                     "hal0 EnablePort(0, 1)",
                                     "hal0 EnablePort(0, 2)",
                                     "hal0 VendorSpecificIoctl(0, 3, null)",
                                     "hal0 SetPhyPortSpeedDuplex(0, 1, 4, 0)",
                                     "hal0 EnablePhyPortEee(0, 1)"}));
}

TEST_F(RestoreConfig, NeverSendsLanAndSpeedSettingsToPort0)
{
    platform.slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        SwitchCaps caps = {};
        caps.numOfPorts = 1;
        caps.port[0].portHasPhy = 1;
        memcpy(reinterpret_cast<void*>(args[1]), &caps, sizeof(caps));
        return 0;
    };
    Init(SwitchBoard::With({{.halLibName = "liborblink_second.so"}}));
    SwitchProvConfig& config = Record(0).config;
    config.groupId[0] = 1;
    config.lanPortVlan[0] = 50;
    config.lanPortPcp[0] = 1;
    config.egressTagging[0] = 1;
    config.link[0] = {4, 0};
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(RestoreCalls(), (Lines{"hal1 DisablePort(0, 0)", "hal1 SetMacAging(0, 3)",
                                     "hal1 SetLEDConfig(0, 3)", "hal1 EnablePort(0, 0)"}));
    EXPECT_FALSE(transcript.Has("- Port "));
}

TEST_F(RestoreConfig, SkipsPortsWhosePhyMarkIsNotExactlyOne)
{
    Init();
    for (uint32_t mark : {0U, 2U, 0xFFFFFFFFU}) {
        transcript.Clear();
        Record(0).config.state = 1;
        ChangeEverything(Record(0).config);
        Record(0).caps.port[2].portHasPhy = mark;
        EXPECT_EQ(BringUp(), 0);
        EXPECT_FALSE(transcript.Has("SetLanPortGroupId(0, 2,")) << mark;
        EXPECT_FALSE(transcript.Has("SetLanPortVlan(0, 2,")) << mark;
        EXPECT_FALSE(transcript.Has("SetLanPortPcp(0, 2,")) << mark;
        EXPECT_FALSE(transcript.Has("SetLanPortEgressTagging(0, 2,")) << mark;
        EXPECT_FALSE(transcript.Has("- Port 2 HasPhy")) << mark;
        EXPECT_TRUE(transcript.Has("SetLanPortVlan(0, 3, 103)")) << mark;
    }
}

class RestorePortCount : public RestoreConfig,
                         public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(RestorePortCount, BoundsEveryLoop)
{
    const auto& [stored, reached] = GetParam();
    Init();
    Record(0).caps.numOfPorts = static_cast<uint8_t>(stored);
    for (auto& port : Record(0).caps.port)
        port.portHasPhy = 1;
    ChangeEverything(Record(0).config);
    EXPECT_EQ(BringUp(), 0);
    const Lines calls = RestoreCalls();
    for (const char* slot : {"DisablePort", "EnablePort", "SetPortMirror", "EnableRgmiiDelay"})
        EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                                [&](const auto& line) {
                                    return line.rfind("hal0 " + std::string(slot) + "(", 0) == 0;
                                }),
                  reached)
            << slot;
    for (const char* slot : {"SetLanPortVlan", "EnablePhyPortEee", "DisablePhyPortEee"})
        EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                                [&](const auto& line) {
                                    return line.find(std::string(slot) + "(0, 8") !=
                                           std::string::npos;
                                }),
                  0)
            << slot;
    EXPECT_EQ(std::count_if(
                  calls.begin(), calls.end(),
                  [](const auto& line) { return line.find("PhyPortEee(") != std::string::npos; }),
              std::max(0, reached - 1));
}

INSTANTIATE_TEST_SUITE_P(Ports, RestorePortCount,
                         testing::Values(std::pair(0, 0), std::pair(1, 1), std::pair(2, 2),
                                         std::pair(7, 7), std::pair(8, 8), std::pair(9, 8),
                                         std::pair(255, 8)),
                         [](const auto& info) { return std::to_string(info.param.first); });

TEST_F(RestoreConfig, GoesOnWithoutALedSlot)
{
    HalTable("a").SetLEDConfig = nullptr;
    Init();
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(Between("log3 _RestoreConfig:# Set LED config to 3",
                      "log3 _RestoreConfig:# Enabling Ports: Mask 0xff"),
              Lines({"log3 _RestoreConfig:# Set LED config to 3",
                     "log2 _RestoreConfig:# No HAL Function to set LED config!",
                     "log3 _RestoreConfig:# Enabling Ports: Mask 0xff"}));
}

TEST_F(RestoreConfig, FromAnOddSetDefaultLoadsNoDefaultsAndNeedsNoValidity)
{
    Init();
    for (int setDefault : {2, -1, 256}) {
        transcript.Clear();
        Record(0).config.state = 1;
        Record(0).configValid = 0;
        Record(0).config.mtuSize = 1400;
        EXPECT_EQ(BringUp(setDefault), 0);
        EXPECT_EQ(transcript.All()[1],
                  "log9 ORBLINK_ResetDisable:# DevIdx = 0, Set default configuration");
        EXPECT_TRUE(transcript.Has("hal0 SetMtuSize(0, 1400)"));
        EXPECT_EQ(Record(0).configValid, 0);
    }
}

TEST_F(RestoreConfig, FromSetDefault1ReplacesEverySettingAndKeepsTheRest)
{
    Init();
    const SwitchDeviceRecord initial = Record(0);
    ChangeEverything(Record(0).config);
    SwitchDeviceRecord& record = Record(0);
    record.config.enabledPorts = 1;
    record.config.eeePorts = 0xC0;
    record.config.STagTpid = 0x9100;
    for (auto& lock : record.config.groupIdLock)
        lock = 0;
    record.configValid = 0;
    record.serviceStatus = 12;
    record.dvtPorts = 0x06;
    EXPECT_EQ(BringUp(1), 0);

    SwitchDeviceRecord expected = initial;
    expected.config.state = 2;
    expected.serviceStatus = 12;
    expected.dvtPorts = 0x06;
    SwitchDeviceRecord now = record;
    EXPECT_EQ(now.config.macToVlanTable[3].EnableMapping, 0U);
    // Of a free entry only the mark counts.
    now.config.macToVlanTable[3] = expected.config.macToVlanTable[3];
    EXPECT_EQ(memcmp(&now, &expected, sizeof(now)), 0);
}

}  // namespace
