// The C++ layer over the scripted platform: each function does what its C function does.
#include "tests/bindings/cpp/pair.h"
#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;
using namespace orblink;

namespace {

constexpr SwitchIndex kSwitch{0};
constexpr PortIndex kPort{2};
constexpr PortIndex kRgmii{7};
constexpr MacAddress kMac = {2, 0, 0, 0, 0, 9};
constexpr std::array<uint16_t, 6> kLimits = {10, 20, 30, 40, 50, 60};
uint8_t parameters[] = {1, 0, 0, 0};
uint32_t ioctlWord = 5;

uint32_t CountEntries(MacEntry* entry)
{
    return entry != nullptr;
}

// For one that says nothing but its result.
#define SAME(name, arguments, ...)                                     \
    Pair                                                               \
    {                                                                  \
        "ORBLINK_" #name, [] { return Of(ORBLINK_##name arguments); }, \
            [] { return Of(__VA_ARGS__); }                             \
    }

const Pair kSettings[] = {
    SAME(ResetEnable, (0), ResetEnable(kSwitch)),
    SAME(ResetDisable, (0, 1, parameters, 4),
         ResetDisable(kSwitch, BringUp::kDefaults, parameters)),
    SAME(SetOrbLinkServiceStatus, (0, 7), SetOrbLinkServiceStatus(kSwitch, 7)),
    SAME(EnableProviderBridgedMode, (0, 0x88A8), EnableProviderBridgedMode(kSwitch, 0x88A8)),
    SAME(DisableProviderBridgedMode, (0), DisableProviderBridgedMode(kSwitch)),
    SAME(SetLanPortVlan, (0, 2, 100), SetLanPortVlan(kSwitch, kPort, 100)),
    SAME(SetLanPortPcp, (0, 2, 5), SetLanPortPcp(kSwitch, kPort, 5)),
    SAME(SetLanPortEgressTagging, (0, 2, 1), SetLanPortEgressTagging(kSwitch, kPort, 1)),
    SAME(SetLanPortGroupId, (0, 2, 3, 2), SetLanPortGroupId(kSwitch, kPort, 3, GroupLock::kUnlock)),
    SAME(MapMactoVlan, (0, 2, kMac.data(), 0xFF0, 9, 1),
         MapMactoVlan(kSwitch, kPort, kMac, 0xFF0, 9, Mapping::kAdd)),
    SAME(ResetPortCounters, (0, 2), ResetPortCounters(kSwitch, kPort)),
    SAME(SetPhyPortSpeedDuplex, (0, 2, OB_SPEED_100M, 1),
         SetPhyPortSpeedDuplex(kSwitch, kPort, Speed::k100M, Duplex::kFull)),
    SAME(EnablePort, (0, 2), EnablePort(kSwitch, kPort)),
    SAME(DisablePort, (0, 2), DisablePort(kSwitch, kPort)),
    SAME(EnableRgmiiDelay, (0, 7), EnableRgmiiDelay(kSwitch, kRgmii)),
    SAME(DisableRgmiiDelay, (0, 7), DisableRgmiiDelay(kSwitch, kRgmii)),
    SAME(EnablePhyPortEee, (0, 2), EnablePhyPortEee(kSwitch, kPort)),
    SAME(DisablePhyPortEee, (0, 2), DisablePhyPortEee(kSwitch, kPort)),
    SAME(SetPortMirror, (0, 2, 3), SetPortMirror(kSwitch, kPort, PortIndex{3})),
    SAME(SetPortIEEETestMode, (0, 2, 1), SetPortIEEETestMode(kSwitch, kPort, 1)),
    SAME(EnablePhyPortDvt, (0, 2, 3), EnablePhyPortDvt(kSwitch, kPort, 3)),
    SAME(DisablePhyPortDvt, (0, 2), DisablePhyPortDvt(kSwitch, kPort)),
    SAME(ForEachMacEntry, (0, CountEntries), ForEachMacEntry(kSwitch, CountEntries)),
    SAME(EnableIgmpSnooping, (0), EnableIgmpSnooping(kSwitch)),
    SAME(DisableIgmpSnooping, (0), DisableIgmpSnooping(kSwitch)),
    SAME(WritePortReg, (0, 2, 4, 6), WritePortReg(kSwitch, 2, 4, 6)),
    SAME(SmiWrite, (0, 0x113, 8), SmiWrite(kSwitch, 0x113, 8)),
    SAME(VendorSpecificIoctl, (0, 3, &ioctlWord), VendorSpecificIoctl(kSwitch, 3, &ioctlWord)),
    SAME(PrintMachineState, (0), PrintMachineState(kSwitch)),
    SAME(SetQWred, (0, 1, 10, 20, 30, 40, 50, 60), SetQWred(kSwitch, 1, kLimits)),
    SAME(SetGlobWred, (0, 1, 2, 3, 10, 20, 30, 40, 50, 60), SetGlobWred(kSwitch, 1, 2, 3, kLimits)),
    SAME(SetQRsrv, (0, 1, 2), SetQRsrv(kSwitch, 1, 2)),
    SAME(SetPortFc, (0, 2, 300, 200), SetPortFc(kSwitch, kPort, 300, 200)),
    SAME(SetMacAging, (0, 3), SetMacAging(kSwitch, 3)),
    SAME(SetMtuSize, (0, 1600), SetMtuSize(kSwitch, 1600)),
    SAME(SetLEDConfig, (0, 4), SetLEDConfig(kSwitch, 4)),
    // The family is initialised already.
    SAME(InitOnce, (1), InitOnce(Initialise::kWithDefaults)),
};

Outcome LinkByC()
{
    uint32_t up = 0;
    uint32_t speed = 0;
    uint32_t full = 0;
    return ORBLINK_GetPortLink(0, 2, &up, &speed, &full) == 0 ? Outcome{0, up, speed, full}
                                                              : kRefused;
}

Outcome LinkByCpp()
{
    return Of(GetPortLink(kSwitch, kPort), [](const Link& link) {
        return Outcome{0, link.IsUp(), Number(link.Speed()), Number(link.Duplex())};
    });
}

Outcome MacsByC()
{
    uint8_t macs[5][6];
    return ORBLINK_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]) == 0 ? BytesOf(macs)
                                                                                     : kRefused;
}

Outcome CountByC()
{
    uint8_t count = 0;
    return ORBLINK_GetNumOfSwitches(&count) == 0 ? Outcome{0, count} : kRefused;
}

Outcome RegionByC()
{
    SwitchDeviceRegion region{};
    return ORBLINK_GetSwitchDevices(&region) == 0 ? BytesOf(region) : kRefused;
}

Outcome TableByC()
{
    MacTable table{};
    return ORBLINK_GetMacTable(0, &table) == 0 ? Outcome{0, table.count, table.entry[0].data[0]}
                                               : kRefused;
}

Outcome TableByCpp()
{
    MacTable table{};
    if (!GetMacTable(kSwitch, table))
        return kRefused;
    const auto entries = Entries(table);
    return {0, entries.size(), entries.empty() ? 0U : entries.front().data[0]};
}

Outcome MappingsByCpp()
{
    std::array<MacToVlanEntry, OB_MAC_VLAN_ENTRIES> table{};
    return GetMactoVlanTable(kSwitch, table) ? BytesOf(table) : kRefused;
}

Outcome ConfiguredByC()
{
    SwitchBoardEntry entry{};
    uint32_t found = 0;
    return OBOS_GetConfiguredDevice(1, &entry, &found) == 0
               ? Outcome{0, found, SumOf(&entry, sizeof entry)}
               : kRefused;
}

Outcome ConfiguredByCpp()
{
    return Of(GetConfiguredDevice(1), [](const ConfiguredDevice& device) {
        return Outcome{0, device.found, SumOf(&device.entry, sizeof device.entry)};
    });
}

const Pair kQueries[] = {
    {"ORBLINK_GetNumOfSwitches", CountByC, [] { return Of(GetNumOfSwitches()); }},
    {"ORBLINK_GetSwitchCaps", [] { return Copied<SwitchCaps>(ORBLINK_GetSwitchCaps); },
     [] { return BytesOf(GetSwitchCaps(kSwitch)); }},
    {"ORBLINK_GetSwitchProvConfig",
     [] { return Copied<SwitchProvConfig>(ORBLINK_GetSwitchProvConfig); },
     [] { return BytesOf(GetSwitchProvConfig(kSwitch)); }},
    {"ORBLINK_GetSwitchDevices", RegionByC, [] { return BytesOf(GetSwitchDevices()); }},
    {"ORBLINK_GetIsolationModeEnabled", [] { return Taken(ORBLINK_GetIsolationModeEnabled); },
     [] { return Of(GetIsolationModeEnabled(kSwitch)); }},
    {"OBOS_CreateSwitchDevices", [] { return Of(OBOS_CreateSwitchDevices()); },
     [] { return Of(CreateSwitchDevices()); }},
    {"OBOS_MapSwitchDevices", [] { return Outcome{OBOS_MapSwitchDevices() != nullptr}; },
     [] { return Outcome{MapSwitchDevices() != nullptr}; }},
    {"OBOS_GetConfiguredDevice", ConfiguredByC, ConfiguredByCpp},
    {"ORBLINK_isBatteryMode", [] { return Outcome{ORBLINK_isBatteryMode() != 0}; },
     [] { return Outcome{IsBatteryMode()}; }},
    {"ORBLINK_GetMacAddresses", MacsByC, [] { return BytesOf(GetMacAddresses()); }},
    {"ORBLINK_IsOrbLinkServiceOn", [] { return Outcome{ORBLINK_IsOrbLinkServiceOn(0)}; },
     [] { return Outcome{IsOrbLinkServiceOn(kSwitch)}; }},
    {"ORBLINK_GetMactoVlanTable",
     [] { return Copied<std::array<MacToVlanEntry, 32>>(ORBLINK_GetMactoVlanTable); },
     MappingsByCpp},
    {"ORBLINK_GetPortCounters",
     [] { return Got<uint64_t>([](uint64_t* out) { return ORBLINK_GetPortCounters(0, 2, out); }); },
     [] { return Of(GetPortCounters<uint64_t>(kSwitch, kPort)); }},
    {"ORBLINK_GetPortLink", LinkByC, LinkByCpp},
    {"ORBLINK_GetPortEnable",
     [] { return Got<uint32_t>([](uint32_t* out) { return ORBLINK_GetPortEnable(0, 2, out); }); },
     [] { return Of(GetPortEnable(kSwitch, kPort)); }},
    {"ORBLINK_GetEeePortState",
     [] { return Got<uint32_t>([](uint32_t* out) { return ORBLINK_GetEeePortState(0, 2, out); }); },
     [] { return Of(GetEeePortState(kSwitch, kPort)); }},
    {"ORBLINK_GetPortIEEETestMode",
     [] {
         return Got<uint8_t>([](uint8_t* out) { return ORBLINK_GetPortIEEETestMode(0, 2, out); });
     },
     [] { return Of(GetPortIEEETestMode(kSwitch, kPort)); }},
    {"ORBLINK_GetMacTable", TableByC, TableByCpp},
    {"ORBLINK_ReadPortReg",
     [] { return Got<uint16_t>([](uint16_t* out) { return ORBLINK_ReadPortReg(0, 2, 4, out); }); },
     [] { return Of(ReadPortReg(kSwitch, 2, 4)); }},
    {"ORBLINK_SmiRead",
     [] { return Got<uint16_t>([](uint16_t* out) { return ORBLINK_SmiRead(0, 0x113, out); }); },
     [] { return Of(SmiRead(kSwitch, 0x113)); }},
    {"ORBLINK_GetLEDConfig", [] { return Taken(ORBLINK_GetLEDConfig); },
     [] { return Of(GetLEDConfig(kSwitch)); }},
};

class SwitchCalls : public EnabledSwitch {
protected:
    SwitchCalls()
    {
        Fill<uint32_t>("GetPortLink", {{2, 1}, {3, OB_SPEED_1G}, {4, 1}});
        Fill<uint64_t>("GetPortCounters", {{2, 0x123456789ABCULL}});
        Fill<uint32_t>("GetEeePortState", {{2, 1}});
        Fill<uint8_t>("GetPortTestMode", {{2, 4}});
        Fill<uint8_t>("GetLEDConfig", {{1, 3}});
        Fill<uint16_t>("ReadPortReg", {{3, 0x1234}});
        Fill<uint16_t>("SmiRead", {{2, 0x4321}});
    }

    // What a slot writes behind its arguments.
    template <typename T>
    void Fill(const std::string& slot, std::vector<std::pair<size_t, T>> values)
    {
        platform.slots[slot] = [values](const SlotArgs& args) {
            for (const auto& [argument, value] : values)
                if (args[argument] != 0)
                    *reinterpret_cast<T*>(args[argument]) = value;
            return 0;
        };
    }

    void ExpectTheSame()
    {
        for (const auto& pair : kSettings)
            ExpectSame(pair, Region());
        for (const auto& pair : kQueries)
            ExpectSame(pair, Region());
    }
};

TEST_F(SwitchCalls, DoWhatTheCFunctionsDo)
{
    ExpectTheSame();
}

TEST_F(SwitchCalls, FailWhenTheCFunctionsFail)
{
    config.state = OB_STATE_RESET;
    platform.systemState = "1";
    Region().NumOfSwitches = 0;
    ExpectTheSame();
}

TEST_F(SwitchCalls, ResultsTellSuccessFromFailure)
{
    EXPECT_TRUE(SetLanPortVlan(kSwitch, kPort, 4094));
    EXPECT_FALSE(SetLanPortVlan(kSwitch, kPort, 4095));
    EXPECT_EQ(config.lanPortVlan[2], 4094);
    EXPECT_EQ(GetSwitchCaps(kSwitch)->numOfPorts, 8);
    EXPECT_FALSE(GetSwitchCaps(SwitchIndex{1}));
    EXPECT_EQ(GetNumOfSwitches().ValueOr(9), 1);
    EXPECT_EQ(GetEeePortState(SwitchIndex{1}, kPort).ValueOr(9), 9U);
}

TEST_F(SwitchCalls, NoMoreEntriesThanATableHas)
{
    MacTable table{};
    table.count = 1000;
    EXPECT_EQ(Entries(table).size(), size_t{OB_MAC_TABLE_ENTRIES});
}

}  // namespace
