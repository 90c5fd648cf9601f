// The table.
#include "tests/switch/operations/operation.h"

namespace obtest {
namespace {

constexpr const char* kBatteryProbe =
    "sys fopen(/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state, r)";

constexpr const char* kInvalidPort = "Invalid PortIdx={p}, DevIdx={d}";
constexpr const char* kInvalidPhyPort = "Invalid PhyPortIdx={p}, DevIdx={d}";
constexpr const char* kInvalidEeePort = "Invalid PhyPortIdx={p} DevIdx={d}";
constexpr const char* kInvalidLanPort = "Invalid LanPortIdx={p}, DevIdx={d}";
constexpr const char* kInvalidRgmiiPort = "Invalid RgmiiPortIdx={p}, DevIdx={d}";
constexpr const char* kNotEnabledNotice = "log2 Switch is not in enabled state, DevIdx={d}";

const uint8_t kMac[6] = {0x02, 0x00, 0x00, 0x00, 0x12, 0x34};
uint32_t out[64];
uint8_t ledMode = 3;
MacTable macTable;

uint8_t With(uint8_t bitmap, int port)
{
    return static_cast<uint8_t>(bitmap | 1 << port);
}

uint8_t Without(uint8_t bitmap, int port)
{
    return static_cast<uint8_t>(bitmap & ~(1 << port));
}

void StoreMapping(SwitchDeviceRecord& record, int port)
{
    MacToVlanEntry& entry = record.config.macToVlanTable[0];
    std::copy(kMac, kMac + 6, entry.Mac);
    entry.VlanId = 100;
    entry.Mask = 0xFFF;
    entry.LogPort = static_cast<uint8_t>(port);
    entry.EnableMapping = 1;
}

// One slot that is called with the arguments; its failure is logged with the message.
Operation OneSlot(Operation operation, const std::string& slot, const std::string& arguments,
                  const std::string& failed)
{
    const std::string step = "hal " + slot + "(" + arguments + ")";
    operation.steps.insert(operation.steps.begin(), step);
    operation.failures = {{.slot = slot, .steps = {step, "log1 " + failed}}};
    return operation;
}

// A value that only the HAL knows the meaning of.
Operation PassThrough(Operation operation, const std::string& slot, const std::string& arguments,
                      const std::string& failed)
{
    operation.needsEnabled = true;
    return OneSlot(std::move(operation), slot, arguments, failed);
}

}  // namespace

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> operations = {
        OneSlot({.name = "EnableProviderBridgedMode",
                 .call = [](uint8_t d,
                            uint8_t) { return ORBLINK_EnableProviderBridgedMode(d, 0x88A8); },
                 .before = {"log9 STagTpid=34984"},
                 .already = "log2 Switch is already in Provider Bridge Mode with STagTpid=0x88a8, "
                            "DevIdx={d}",
                 .store =
                     [](SwitchDeviceRecord& record, int) {
                         record.config.InProviderBridgedMode = 1;
                         record.config.STagTpid = 0x88A8;
                     }},
                "EnableProviderBridgedMode", "{d}, 34984",
                "ORBLINK_EnableProviderBridgedMode failed, STagTpid=0x88a8, DevIdx={d}"),
        OneSlot({.name = "DisableProviderBridgedMode",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_DisableProviderBridgedMode(d); },
                 .before = {"log9 ", kBatteryProbe},
                 .prepare =
                     [](SwitchDeviceRecord& record) {
                         record.config.InProviderBridgedMode = 1;
                         record.config.STagTpid = 0x9100;
                     },
                 .already = "log2 Provider Bridge Mode is already disabled, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int) { record.config.InProviderBridgedMode = 0; }},
                "DisableProviderBridgedMode", "{d}",
                "DisableProviderBridgedMode failed, DevIdx={d}"),
        OneSlot({.name = "SetLanPortVlan",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetLanPortVlan(d, p, 100); },
                 .before = {"log9 LanPortIdx={p}, Vid=100"},
                 .ports = {.lowest = 1, .invalid = kInvalidLanPort},
                 .already = "log2 Vlan 100 is already set for LanPortIdx={p}, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int port) { record.config.lanPortVlan[port] = 100; }},
                "SetLanPortVlan", "{d}, {p}, 100",
                "SetLanPortVlan failed, LanPortIdx={p}, Vid=100, DevIdx={d}"),
        OneSlot({.name = "SetLanPortPcp",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetLanPortPcp(d, p, 5); },
                 .before = {"log9 LanPortIdx={p}, Pcp=5"},
                 .ports = {.lowest = 1, .invalid = kInvalidLanPort},
                 .already = "log2 Pcp 5 is already set for LanPortIdx={p}, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int port) { record.config.lanPortPcp[port] = 5; }},
                "SetLanPortPcp", "{d}, {p}, 5",
                "SetLanPortPcp failed, LanPortIdx={p}, Pcp=5, DevIdx={d}"),
        OneSlot(
            {.name = "SetLanPortEgressTagging",
             .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetLanPortEgressTagging(d, p, 2); },
             .before = {"log9 LanPortIdx={p}, EnableEgressTagging=2"},
             .ports = {.lowest = 1, .invalid = kInvalidLanPort},
             .already = "log2 EnableEgressTagging 2 is already set for LanPortIdx={p}, DevIdx={d}",
             .store = [](SwitchDeviceRecord& record,
                         int port) { record.config.egressTagging[port] = 2; }},
            "SetLanPortEgressTagging", "{d}, {p}, 2",
            "SetLanPortEgressTagging failed, LanPortIdx={p}, EnableEgressTagging=2, DevIdx={d}"),
        OneSlot({.name = "SetLanPortGroupId",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetLanPortGroupId(d, p, 7, 1); },
                 .before = {"log9 LanPortIdx={p}, GroupId=7"},
                 .ports = {.lowest = 1, .invalid = kInvalidLanPort},
                 .already = "log2 GroupId 7 is already set for LanPortIdx={p}, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int port) { record.config.groupId[port] = 7; }},
                "SetLanPortGroupId", "{d}, {p}, 7",
                "SetLanPortGroupId failed, LanPortIdx={p}, GroupId=7, DevIdx={d}"),
        {.name = "MapMactoVlan",
         .call = [](uint8_t d,
                    uint8_t p) { return ORBLINK_MapMactoVlan(d, p, kMac, 0xFFF, 100, 1); },
         .ports = {.lowest = 1, .invalid = kInvalidPhyPort},
         .steps = {"hal MapSetMacToVlan({d}, {p}, 02:00:00:00:12:34, 4095, 100, 1)"},
         .failures = {{"MapSetMacToVlan",
                       {"hal MapSetMacToVlan({d}, {p}, 02:00:00:00:12:34, 4095, 100, 1)",
                        "log1 MapSetMacToVlan failed, LogPort={p}, Mac=02:00:00:00:12:34, "
                        "Mask=0FFF, VlanId=100, EnableMapping=1"},
                       true}},
         .store = StoreMapping},
        {.name = "GetMactoVlanTable",
         .call =
             [](uint8_t d, uint8_t) {
                 MacToVlanEntry table[OB_MAC_VLAN_ENTRIES];
                 return ORBLINK_GetMactoVlanTable(d, table);
             }},
        PassThrough(
            {.name = "GetPortCounters",
             .call = [](uint8_t d, uint8_t p) { return ORBLINK_GetPortCounters(d, p, out); },
             .before = {"log9 PortIdx={p}"},
             .ports = {.invalid = kInvalidPort}},
            "GetPortCounters", "{d}, {p}, ptr", "GetPortCounters failed, PortIdx={p}, DevIdx={d}"),
        PassThrough({.name = "ResetPortCounters",
                     .call = [](uint8_t d, uint8_t p) { return ORBLINK_ResetPortCounters(d, p); },
                     .before = {"log9 PortIdx={p}"},
                     .ports = {.invalid = kInvalidPort}},
                    "ResetPortCounters", "{d}, {p}",
                    "ResetPortCounters failed, PortIdx={p}, DevIdx={d}"),
        PassThrough(
            {.name = "GetPortLink",
             .call =
                 [](uint8_t d, uint8_t p) {
                     uint32_t link = 1, speed = OB_SPEED_1G, duplex = 1;
                     return ORBLINK_GetPortLink(d, p, &link, &speed, &duplex);
                 },
             .ports = {.invalid = kInvalidPort},
             .steps =
                 {"log9 DevIdx={d}, PortIdx={p}, LinkDetected=ON, LinkSpeed=1Gb/s, FullDp=FD"}},
            "GetPortLink", "{d}, {p}, ptr, ptr, ptr",
            "GetPortLink failed, PortIdx={p}, DevIdx={d}"),
        OneSlot(
            {.name = "SetPhyPortSpeedDuplex",
             .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetPhyPortSpeedDuplex(d, p, 3, 0); },
             .before = {"log9 PhyPortIdx={p}, PhySpeed=3, LinkSpeed=0, FullDp=0"},
             .ports = {.invalid = kInvalidPhyPort},
             .already = "log2 PhyPortIdx={p} link is already in desired speed=3 and duplex=0 "
                        "modes, DevIdx={d}",
             .store =
                 [](SwitchDeviceRecord& record, int port) {
                     record.config.link[port].linkSpeed = 3;
                     record.config.link[port].linkFullDuplex = 0;
                 }},
            "SetPhyPortSpeedDuplex", "{d}, {p}, 3, 0",
            "SetPhyPortSpeedDuplex failed PhyPortIdx={p}, PhySpeed=3, FullDp=0, DevIdx={d}"),
        {.name = "EnablePort",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_EnablePort(d, p); },
         .before = {"log9 --->", "log9 DevIdx {d}, PortIdx={p}"},
         .ending = Ending::kArrows,
         .ports = {.invalid = kInvalidPhyPort},
         .prepare = [](SwitchDeviceRecord& record) { record.config.enabledPorts = 0; },
         .steps = {"hal EnablePort({d}, {p})", "hal SetPhyPortSpeedDuplex({d}, {p}, 1, 1)",
                   "hal EnablePhyPortEee({d}, {p})"},
         .failures = {{"EnablePort",
                       {"hal EnablePort({d}, {p})",
                        "log1 EnablePort failed, PortIdx={p}, DevIdx={d}"},
                       true},
                      {"SetPhyPortSpeedDuplex",
                       {"hal EnablePort({d}, {p})", "hal SetPhyPortSpeedDuplex({d}, {p}, 1, 1)",
                        "log1 _RestorePortConfig:# SetPhyPortSpeedDuplex failed PhyPortIdx={p}, "
                        "PhySpeed=1, FullDp=1, DevIdx={d}",
                        "log1 Failed restore port configuration, DevIdx={d} PhyPortIdx={p}"},
                       true},
                      {"EnablePhyPortEee",
                       {"hal EnablePort({d}, {p})", "hal SetPhyPortSpeedDuplex({d}, {p}, 1, 1)",
                        "hal EnablePhyPortEee({d}, {p})",
                        "log1 _RestorePortConfig:# EnablePhyPortEee failed, PhyPortIdx = {p}, "
                        "DevIdx={d}",
                        "log1 Failed restore port configuration, DevIdx={d} PhyPortIdx={p}"},
                       true}},
         .already = "log2 PortIdx={p} link is already enabled, DevIdx={d}",
         .offline = {kNotEnabledNotice},
         .store = [](SwitchDeviceRecord& record,
                     int port) { record.config.enabledPorts = With(0, port); }},
        {.name = "GetPortEnable",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_GetPortEnable(d, p, out); },
         .before = {"log9 --->", "log9 DevIdx {d}, PortIdx={p}"},
         .ending = Ending::kArrows,
         .ports = {.invalid = kInvalidPhyPort},
         .needsEnabled = true},
        {.name = "DisablePort",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_DisablePort(d, p); },
         .before = {"log9 --->", "log9 DevIdx {d}, PortIdx={p}"},
         .ending = Ending::kArrows,
         .ports = {.invalid = kInvalidPhyPort},
         .prepare = [](SwitchDeviceRecord& record) { record.dvtPorts = 0x7E; },
         .steps = {"hal DisablePort({d}, {p})", "log9 ORBLINK_Disable -> bits now: 0xfb"},
         .failures = {{"DisablePort",
                       {"hal DisablePort({d}, {p})",
                        "log1 DisablePort failed, PortIdx={p}, DevIdx={d}"},
                       true}},
         .already = "log2 PortIdx={p} link is already disabled, DevIdx={d}",
         .offline = {kNotEnabledNotice},
         .store =
             [](SwitchDeviceRecord& record, int port) {
                 record.config.enabledPorts = Without(0xFF, port);
                 record.dvtPorts = Without(0x7E, port);
             }},
        OneSlot({.name = "EnableRgmiiDelay",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_EnableRgmiiDelay(d, p); },
                 .before = {"log9 RgmiiPortIdx={p}"},
                 .ending = Ending::kFinished,
                 .port = 7,
                 .ports = {.invalid = kInvalidRgmiiPort},
                 .already = "log2 RGMII delay is already enabled for RgmiiPortIdx={p}, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int port) { record.config.rgmiiDelayPorts = With(0, port); }},
                "EnableRgmiiDelay", "{d}, {p}",
                "EnableRgmiiDelay failed, RgmiiPortIdx = {p}, DevIdx={d}"),
        OneSlot(
            {.name = "DisableRgmiiDelay",
             .call = [](uint8_t d, uint8_t p) { return ORBLINK_DisableRgmiiDelay(d, p); },
             .before = {"log9 RgmiiPortIdx={p}"},
             .ending = Ending::kFinished,
             .port = 7,
             .ports = {.invalid = kInvalidRgmiiPort},
             .prepare = [](SwitchDeviceRecord& record) { record.config.rgmiiDelayPorts = 0xFF; },
             .already = "log2 RGMII delay is already disabled for RgmiiPortIdx={p}, DevIdx={d}",
             .store = [](SwitchDeviceRecord& record,
                         int port) { record.config.rgmiiDelayPorts = Without(0xFF, port); }},
            "DisableRgmiiDelay", "{d}, {p}",
            "DisableRgmiiDelay failed, RgmiiPortIdx = {p}, DevIdx={d}"),
        OneSlot({.name = "GetEeePortState",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_GetEeePortState(d, p, out); },
                 .before = {"log9 DevIdx = {d}, Port={p}"},
                 .ending = Ending::kFinished,
                 .ports = {.invalid = kInvalidEeePort}},
                "GetEeePortState", "{d}, {p}, ptr",
                "GetEeePortState failed, DevIdx = {d}, Port={p}"),
        {.name = "EnablePhyPortEee",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_EnablePhyPortEee(d, p); },
         .before = {"log9 PhyPortIdx={p}"},
         .ending = Ending::kFinished,
         .ports = {.invalid = kInvalidEeePort},
         .prepare = [](SwitchDeviceRecord& record) { record.config.eeePorts = 0x30; },
         .steps = {"hal DisablePort({d}, {p})", "hal EnablePhyPortEee({d}, {p})",
                   "hal EnablePort({d}, {p})"},
         .failures = {{"DisablePort",
                       {"hal DisablePort({d}, {p})",
                        "log1 DisablePort failed, PhyPortIdx = {p}, DevIdx={d}"}},
                      {"EnablePhyPortEee",
                       {"hal DisablePort({d}, {p})", "hal EnablePhyPortEee({d}, {p})",
                        "log1 EnablePhyPortEee failed, PhyPortIdx = {p}, DevIdx={d}",
                        "hal EnablePort({d}, {p})"}}},
         .already = "log2 EEE is already enabled for PortIdx={p}, DevIdx={d}",
         .store = [](SwitchDeviceRecord& record,
                     int port) { record.config.eeePorts = With(0x30, port); }},
        {.name = "DisablePhyPortEee",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_DisablePhyPortEee(d, p); },
         .before = {"log9 PhyPortIdx={p}", kBatteryProbe},
         .ending = Ending::kFinished,
         .ports = {.invalid = kInvalidEeePort},
         .steps = {"hal DisablePort({d}, {p})", "hal DisablePhyPortEee({d}, {p})",
                   "hal EnablePort({d}, {p})"},
         .failures = {{"DisablePort",
                       {"hal DisablePort({d}, {p})",
                        "log1 DisablePort failed, PhyPortIdx = {p}, DevIdx={d}"}},
                      {"DisablePhyPortEee",
                       {"hal DisablePort({d}, {p})", "hal DisablePhyPortEee({d}, {p})",
                        "log1 DisablePhyPortEee failed, PhyPortIdx = {p}, DevIdx={d}",
                        "hal EnablePort({d}, {p})"}}},
         .already = "log2 EEE is already disabled for PortIdx={p}, DevIdx={d}",
         .store = [](SwitchDeviceRecord& record,
                     int port) { record.config.eeePorts = Without(0x3F, port); }},
        OneSlot({.name = "SetPortMirror",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetPortMirror(d, p, 0); },
                 .before = {"log9 SrcPortIdx={p}, DstPortIdx=0"},
                 .ending = Ending::kFinished,
                 .ports = {.highestAsked = 7, .invalid = "Invalid SrcPortIdx={p} DevIdx={d}"},
                 .already = "log9 Mirroring of PortIdx={p} is already set to port PortIdx=0, "
                            "DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record,
                             int port) { record.config.mirrorDst[port] = 0; }},
                "SetPortMirror", "{d}, {p}, 0",
                "SetPortMirror failed, SrcPortIdx={p}, DstPortIdx=0, DevIdx={d}"),
        OneSlot(
            {.name = "GetPortIEEETestMode",
             .call = [](uint8_t d, uint8_t p) { return ORBLINK_GetPortIEEETestMode(d, p, out); },
             .before = {"log9 GetPortIEEETestMode dev={d}, port={p}"},
             .ending = Ending::kFinished,
             .ports = {.invalid = kInvalidPort},
             .absent = "log1 GetPortTestMode HAL does not exist for switch impl "
                       "liborblink_velmar.so, DevIdx={d}"},
            "GetPortTestMode", "{d}, {p}, ptr", "GetPortTestMode failed, DevIdx={d}"),
        OneSlot({.name = "SetPortIEEETestMode",
                 .call = [](uint8_t d, uint8_t p) { return ORBLINK_SetPortIEEETestMode(d, p, 3); },
                 .before = {"log9 SetPortIEEETestMode dev={d}, port={p}, mode=3"},
                 .ending = Ending::kFinished,
                 .ports = {.invalid = kInvalidPort},
                 .absent = "log1 SetPortTestMode HAL does not exist for switch impl "
                           "liborblink_velmar.so, DevIdx={d}"},
                "SetPortTestMode", "{d}, {p}, 3", "SetPortTestMode failed, DevIdx={d}"),
        PassThrough({.name = "EnablePhyPortDvt",
                     .call = [](uint8_t d, uint8_t p) { return ORBLINK_EnablePhyPortDvt(d, p, 3); },
                     .store = [](SwitchDeviceRecord& record,
                                 int port) { record.dvtPorts = With(0, port); }},
                    "SetPhyPortDvt", "{d}, {p}, 3",
                    "SetPhyPortDvt failed, DevIdx {d} , PhyPortIdx {p}, DvtTest 3"),
        {.name = "DisablePhyPortDvt",
         .call = [](uint8_t d, uint8_t p) { return ORBLINK_DisablePhyPortDvt(d, p); },
         .prepare = [](SwitchDeviceRecord& record) { record.dvtPorts = 0x7E; },
         .steps = {"hal SetPhyPortDvt({d}, {p}, 0)", "hal SetPhyPortSpeedDuplex({d}, {p}, 1, 1)",
                   "hal EnablePhyPortEee({d}, {p})"},
         .failures = {{"SetPhyPortDvt",
                       {"hal SetPhyPortDvt({d}, {p}, 0)",
                        "log1 SetPhyPortDvt failed, DevIdx {d} , PhyPortIdx {p}"}},
                      {"EnablePhyPortEee",
                       {"hal SetPhyPortDvt({d}, {p}, 0)",
                        "hal SetPhyPortSpeedDuplex({d}, {p}, 1, 1)",
                        "hal EnablePhyPortEee({d}, {p})",
                        "log1 _RestorePortConfig:# EnablePhyPortEee failed, PhyPortIdx = {p}, "
                        "DevIdx={d}",
                        "log1 Failed restore port configuration, DevIdx={d} PhyPortIdx={p}"},
                       true}},
         .needsEnabled = true,
         .store = [](SwitchDeviceRecord& record,
                     int port) { record.dvtPorts = Without(0x7E, port); }},
        PassThrough({.name = "ForEachMacEntry",
                     .call =
                         [](uint8_t d, uint8_t) {
                             return ORBLINK_ForEachMacEntry(d, [](MacEntry*) { return 1U; });
                         },
                     .before = {"log9 "}},
                    "ForEachMacEntry", "{d}, ptr, null", "ForEachMacEntry failed, DevIdx={d}"),
        PassThrough({.name = "GetMacTable",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_GetMacTable(d, &macTable); },
                     .before = {"log9 "}},
                    "ForEachMacEntry", "{d}, ptr, ptr", "ForEachMacEntry failed, DevIdx={d}"),
        OneSlot({.name = "EnableIgmpSnooping",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_EnableIgmpSnooping(d); },
                 .before = {"log9 "},
                 .ending = Ending::kFinished,
                 .already = "log2 IGMP/MLD Snooping is already enabled, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record, int) { record.config.igmpSnooping = 1; }},
                "EnableIgmpSnooping", "{d}", "EnableIgmpSnooping failed, DevIdx={d}"),
        OneSlot({.name = "DisableIgmpSnooping",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_DisableIgmpSnooping(d); },
                 .before = {"log9 "},
                 .ending = Ending::kFinished,
                 .prepare = [](SwitchDeviceRecord& record) { record.config.igmpSnooping = 1; },
                 .already = "log2 IGMP/MLD Snooping is already disabled, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record, int) { record.config.igmpSnooping = 0; }},
                "DisableIgmpSnooping", "{d}", "DisableIgmpSnooping failed, DevIdx"),
        PassThrough(
            {.name = "ReadPortReg",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_ReadPortReg(d, 65535, 17, out); },
             .before = {"log9 Port=65535, Reg=17"}},
            "ReadPortReg", "{d}, 65535, 17, ptr",
            "ReadPortReg failed, Port=65535, Reg=17, DevIdx={d}"),
        PassThrough(
            {.name = "WritePortReg",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_WritePortReg(d, 300, 65535, 40000); },
             .before = {"log9 Port=300, Reg=65535"}},
            "WritePortReg", "{d}, 300, 65535, 40000",
            "WritePortReg failed, Port=300, Reg=65535, Val=40000, DevIdx={d}"),
        PassThrough(
            {.name = "VendorSpecificIoctl",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_VendorSpecificIoctl(d, -9, nullptr); },
             .before = {"log9 DevIdx={d}, Cmd=-9 pParam=0x00000000"}},
            "VendorSpecificIoctl", "{d}, -9, null",
            "ioctl failed, DevIdx={d}, Cmd=-9 pParam=0x00000000"),
        PassThrough({.name = "PrintMachineState",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_PrintMachineState(d); }},
                    "PrintMachineState", "{d}", "PrintMachineState failed, DevIdx={d}"),
        PassThrough({.name = "SetQWred",
                     .call = [](uint8_t d,
                                uint8_t) { return ORBLINK_SetQWred(d, 1, 2, 3, 4, 5, 6, 65535); }},
                    "SetQWred", "{d}, 1, 2, 3, 4, 5, 6, 65535", "SetQWred failed, DevIdx={d}"),
        PassThrough({.name = "SetGlobWred",
                     .call =
                         [](uint8_t d, uint8_t) {
                             return ORBLINK_SetGlobWred(d, 255, 2, 3, 4, 5, 6, 7, 8, 65535);
                         }},
                    "SetGlobWred", "{d}, 255, 2, 3, 4, 5, 6, 7, 8, 65535",
                    "SetGlobWred failed, DevIdx={d}"),
        PassThrough({.name = "SetQRsrv",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SetQRsrv(d, 255, 65535); }},
                    "SetQRsrv", "{d}, 255, 65535", "SetQRsrv failed, DevIdx={d}"),
        PassThrough(
            {.name = "SetPortFc",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_SetPortFc(d, 255, 2, 65535); }},
            "SetPortFc", "{d}, 255, 2, 65535", "SetPortFc failed, DevIdx={d}"),
        OneSlot({.name = "SetMacAging",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_SetMacAging(d, 5); },
                 .before = {"log9 DevIdx={d}, Aging=5"},
                 .store = [](SwitchDeviceRecord& record, int) { record.config.macAging = 5; }},
                "SetMacAging", "{d}, 5", "Set MAC aging failed, DevIdx={d}"),
        PassThrough(
            {.name = "SetMtuSize",
             .call = [](uint8_t d, uint8_t) { return ORBLINK_SetMtuSize(d, 9216); },
             .store = [](SwitchDeviceRecord& record, int) { record.config.mtuSize = 9216; }},
            "SetMtuSize", "{d}, 9216", "SetMtuSize failed, Val=9216, DevIdx={d}"),
        PassThrough({.name = "SmiRead",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SmiRead(d, 0xBEEF, out); },
                     .before = {"log9 DevIdx={d}, RegAddr=0xbeef"}},
                    "SmiRead", "{d}, 48879, ptr", "SmiRead failed, Reg=48879, DevIdx={d}"),
        PassThrough({.name = "SmiWrite",
                     .call = [](uint8_t d, uint8_t) { return ORBLINK_SmiWrite(d, 0xBEEF, 65535); },
                     .before = {"log9 DevIdx={d}, RegAddr=0xbeef"}},
                    "SmiWrite", "{d}, 48879, 65535",
                    "SmiWrite failed, Reg=48879, Data=65535, DevIdx={d}"),
        OneSlot({.name = "GetLEDConfig",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_GetLEDConfig(d, &ledMode); },
                 .before = {"log9 GetLEDConfig dev={d}"},
                 .ending = Ending::kFinished,
                 .absent = "log1 GetLEDConfig HAL does not exist for switch impl "
                           "liborblink_velmar.so, DevIdx={d}"},
                "GetLEDConfig", "{d}, ptr", "GetLEDConfig failed, DevIdx={d}"),
        OneSlot({.name = "SetLEDConfig",
                 .call = [](uint8_t d, uint8_t) { return ORBLINK_SetLEDConfig(d, 5); },
                 .before = {"log9 SetLEDConfig dev={d}, mode=5"},
                 .ending = Ending::kFinished,
                 .absent = "log1 SetLEDConfig HAL does not exist for switch impl "
                           "liborblink_velmar.so, DevIdx={d}",
                 .store = [](SwitchDeviceRecord& record, int) { record.config.ledMode = 5; }},
                "SetLEDConfig", "{d}, 5", "SetLEDConfig failed, DevIdx={d}"),
    };
    return operations;
}

}  // namespace obtest
