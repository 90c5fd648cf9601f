// _RestoreConfig and _RestorePortConfig when a HAL slot refuses or is missing.
#include <algorithm>
#include <cstring>

#include "tests/switch/lifecycle/bring_up_fixture.h"

using namespace obtest;

namespace {

using Table = struct OBHAL_HalFuncs;

struct FailingSlot {
    const char* slot;
    void (*remove)(Table& table);
    void (*change)(SwitchProvConfig& config);
    std::string call, message;
};

#define OB_SLOT_NAMED(name) #name, [](Table & table) { table.name = nullptr; }

const FailingSlot kSlots[] = {
    {OB_SLOT_NAMED(DisablePort), [](SwitchProvConfig&) {}, "DisablePort(0, 0)",
     "DisablePort failed, PortIdx=0"},
    {OB_SLOT_NAMED(EnableProviderBridgedMode),
     [](SwitchProvConfig& c) { c.InProviderBridgedMode = 1; },
     "EnableProviderBridgedMode(0, 33024)", "EnableProviderBridgedMode failed, STagTpid=0x8100"},
    {OB_SLOT_NAMED(DisableProviderBridgedMode),
     [](SwitchProvConfig& c) { c.InProviderBridgedMode = 2; }, "DisableProviderBridgedMode(0)",
     "DisableProviderBridgedMode failed"},
    {OB_SLOT_NAMED(SetLanPortGroupId), [](SwitchProvConfig& c) { c.groupId[2] = 9; },
     "SetLanPortGroupId(0, 2, 9)", "SetLanPortGroupId failed, PortIdx=2, GroupId=9"},
    {OB_SLOT_NAMED(SetLanPortVlan), [](SwitchProvConfig& c) { c.lanPortVlan[3] = 77; },
     "SetLanPortVlan(0, 3, 77)", "SetLanPortVlan failed, PortIdx=3, Vlan=77"},
    {OB_SLOT_NAMED(SetLanPortPcp), [](SwitchProvConfig& c) { c.lanPortPcp[4] = 6; },
     "SetLanPortPcp(0, 4, 6)", "SetLanPortPcp failed, PortIdx=4, PCP=6"},
    {OB_SLOT_NAMED(SetLanPortEgressTagging), [](SwitchProvConfig& c) { c.egressTagging[5] = 1; },
     "SetLanPortEgressTagging(0, 5, 1)",
     "SetLanPortEgressTagging failed, PortIdx=5, EgressTagging=1"},
    {OB_SLOT_NAMED(MapSetMacToVlan),
     [](SwitchProvConfig& c) {
         c.macToVlanTable[1] = {8, {1, 1, 1, 1, 1, 1}, 2, 3, 0, 1};
     },
     "MapSetMacToVlan(0, 3, 01:01:01:01:01:01, 2, 8, 1)", "MapSetMacToVlan failed"},
    {OB_SLOT_NAMED(SetMacAging), [](SwitchProvConfig&) {}, "SetMacAging(0, 3)",
     "Set MAC aging failed, DevIdx=0"},
    {OB_SLOT_NAMED(SetPhyPortSpeedDuplex),
     [](SwitchProvConfig& c) {
         c.link[1] = {3, 0};
     },
     "SetPhyPortSpeedDuplex(0, 1, 3, 0)",
     "SetPhyPortSpeedDuplex failed, Port=1, Speed=3, Duplex=0"},
    {OB_SLOT_NAMED(SetPortMirror), [](SwitchProvConfig& c) { c.mirrorDst[4] = 2; },
     "SetPortMirror(0, 4, 2)", "SetPortMirror failed, SrcPortIdx=4, DstPortInd=2"},
    {OB_SLOT_NAMED(EnableRgmiiDelay), [](SwitchProvConfig& c) { c.rgmiiDelayPorts = 0x80; },
     "EnableRgmiiDelay(0, 7)", "EnableRgmiiDelay failed, PortIdx=7"},
    {OB_SLOT_NAMED(EnableIgmpSnooping), [](SwitchProvConfig& c) { c.igmpSnooping = 1; },
     "EnableIgmpSnooping(0)", "EnableIgmpSnooping failed"},
    {OB_SLOT_NAMED(DisableIgmpSnooping), [](SwitchProvConfig& c) { c.igmpSnooping = 5; },
     "DisableIgmpSnooping(0)", "DisableIgmpSnooping failed"},
    {OB_SLOT_NAMED(SetMtuSize), [](SwitchProvConfig& c) { c.mtuSize = 1500; },
     "SetMtuSize(0, 1500)", "Set MTU size failed"},
    {OB_SLOT_NAMED(EnablePort), [](SwitchProvConfig& c) { c.enabledPorts = 0x20; },
     "EnablePort(0, 5)", "EnablePort failed, PortIdx=5"},
    // The only one that a HAL may leave out.
    {OB_SLOT_NAMED(SetLEDConfig), [](SwitchProvConfig&) {}, "SetLEDConfig(0, 3)",
     "Failed to set LED config!"},
};

class RestoreFailure : public BringUpTest, public testing::WithParamInterface<FailingSlot> {
protected:
    Lines ExpectedComplaints()
    {
        return {"log1 _RestoreConfig:# " + GetParam().message,
                "log1 ORBLINK_ResetDisable:# Configuration restore failed, DevIdx=0"};
    }
};

TEST_P(RestoreFailure, EndsTheBringUpWithTheSwitchEnabledAndTheLockFree)
{
    Init();
    GetParam().change(Record(0).config);
    const SwitchDeviceRecord before = Record(0);
    platform.FailSlot(GetParam().slot);
    EXPECT_EQ(BringUp(), -1);
    EXPECT_EQ(Complaints(), ExpectedComplaints());
    EXPECT_EQ(transcript.Only({"hal"}).back(), "hal0 " + GetParam().call);
    const Lines& all = transcript.All();
    ASSERT_GE(all.size(), 6U);
    EXPECT_EQ(all[all.size() - 6], "hal0 " + GetParam().call) << "nothing after the failed call";
    EXPECT_EQ(Record(0).config.state, 2U);
    Record(0).config.state = before.config.state;
    EXPECT_EQ(memcmp(&before, &Record(0), sizeof(before)), 0);
    ExpectErrorExit();
}

class RestoreWithoutSlot : public RestoreFailure {};

TEST_P(RestoreWithoutSlot, FailsInTheSameWay)
{
    Init();
    GetParam().change(Record(0).config);
    GetParam().remove(HalTable("a"));
    EXPECT_EQ(BringUp(), -1);
    EXPECT_EQ(Complaints(), ExpectedComplaints());
    ExpectErrorExit();
}

INSTANTIATE_TEST_SUITE_P(Of, RestoreFailure, testing::ValuesIn(kSlots),
                         [](const auto& info) { return info.param.slot; });

INSTANTIATE_TEST_SUITE_P(Mandatory, RestoreWithoutSlot,
                         testing::ValuesIn(std::begin(kSlots), std::end(kSlots) - 1),
                         [](const auto& info) { return info.param.slot; });

class RestorePort : public BringUpTest {
protected:
    // The calls of _RestorePortConfig, which come after the receive reset.
    static Lines PortCalls()
    {
        const Lines calls = RestoreCalls();
        const auto reset =
            std::find(calls.begin(), calls.end(), "hal0 VendorSpecificIoctl(0, 3, null)");
        return reset == calls.end() ? Lines{"no receive reset"} : Lines(reset + 1, calls.end());
    }

    // Ports 1 and 2 only, both with a PHY.
    void InitTwoPhyPorts()
    {
        Init();
        Record(0).caps.numOfPorts = 3;
    }
};

TEST_F(RestorePort, SendsSpeedAndEeeWhateverTheirValues)
{
    InitTwoPhyPorts();
    Record(0).config.link[2] = {5, 0};
    Record(0).config.eeePorts = 0x02;
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(PortCalls(),
              (Lines{"hal0 SetPhyPortSpeedDuplex(0, 1, 1, 1)", "hal0 EnablePhyPortEee(0, 1)",
                     "hal0 SetPhyPortSpeedDuplex(0, 2, 5, 0)", "hal0 DisablePhyPortEee(0, 2)"}));
}

TEST_F(RestorePort, TakesAnyNonZeroMarkAsAPhy)
{
    InitTwoPhyPorts();
    Record(0).caps.port[1].portHasPhy = 2;
    Record(0).caps.port[2].portHasPhy = 0;
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(PortCalls(),
              (Lines{"hal0 SetPhyPortSpeedDuplex(0, 1, 1, 1)", "hal0 EnablePhyPortEee(0, 1)"}));
}

TEST_F(RestorePort, LeavesPort0Alone)
{
    InitTwoPhyPorts();
    Record(0).caps.port[0].portHasPhy = 1;
    Record(0).caps.numOfPorts = 1;
    EXPECT_EQ(BringUp(), 0);
    EXPECT_THAT(PortCalls(), testing::IsEmpty());
}

struct FailingPortSlot {
    const char* slot;
    uint8_t eeePorts;
    Lines calls, complaints;
};

class RestorePortFailure : public RestorePort,
                           public testing::WithParamInterface<FailingPortSlot> {};

TEST_P(RestorePortFailure, IsLoggedForEachPortAndDoesNotFailTheBringUp)
{
    InitTwoPhyPorts();
    Record(0).config.eeePorts = GetParam().eeePorts;
    platform.FailSlot(GetParam().slot);
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(PortCalls(), GetParam().calls);
    EXPECT_EQ(Complaints(), GetParam().complaints);
    EXPECT_EQ(transcript.All()[transcript.All().size() - 2],
              "log9 ORBLINK_ResetDisable:# finished OK, DevIdx=0");
    EXPECT_EQ(SemaphoreValue(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Of, RestorePortFailure,
    testing::ValuesIn(std::vector<FailingPortSlot>{
        {"SetPhyPortSpeedDuplex",
         0x3F,
         {"hal0 SetPhyPortSpeedDuplex(0, 1, 1, 1)", "hal0 SetPhyPortSpeedDuplex(0, 2, 1, 1)"},
         {"log1 _RestorePortConfig:# SetPhyPortSpeedDuplex failed PhyPortIdx=1, PhySpeed=1, "
          "FullDp=1, DevIdx=0",
          "log1 _RestorePortConfig:# SetPhyPortSpeedDuplex failed PhyPortIdx=2, PhySpeed=1, "
          "FullDp=1, DevIdx=0"}},
        {"EnablePhyPortEee",
         0x04,
         {"hal0 SetPhyPortSpeedDuplex(0, 1, 1, 1)", "hal0 DisablePhyPortEee(0, 1)",
          "hal0 SetPhyPortSpeedDuplex(0, 2, 1, 1)", "hal0 EnablePhyPortEee(0, 2)"},
         {"log1 _RestorePortConfig:# EnablePhyPortEee failed, PhyPortIdx = 2, DevIdx=0"}},
        {"DisablePhyPortEee",
         0x04,
         {"hal0 SetPhyPortSpeedDuplex(0, 1, 1, 1)", "hal0 DisablePhyPortEee(0, 1)",
          "hal0 SetPhyPortSpeedDuplex(0, 2, 1, 1)", "hal0 EnablePhyPortEee(0, 2)"},
         {"log1 _RestorePortConfig:# DisablePhyPortEee failed, PhyPortIdx = 1, DevIdx=0"}}}),
    [](const auto& info) { return info.param.slot; });

TEST_F(RestorePort, WithoutTheSlotIsLoggedOnlyToo)
{
    InitTwoPhyPorts();
    HalTable("a").EnablePhyPortEee = nullptr;
    EXPECT_EQ(BringUp(), 0);
    EXPECT_EQ(Complaints(),
              Lines({"log1 _RestorePortConfig:# EnablePhyPortEee failed, PhyPortIdx = 1, DevIdx=0",
                     "log1 _RestorePortConfig:# EnablePhyPortEee failed, PhyPortIdx = 2, "
                     "DevIdx=0"}));
}

}  // namespace
