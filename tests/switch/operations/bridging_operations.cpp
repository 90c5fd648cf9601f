// The rows of bridging: provider mode, VLANs, groups, MAC addresses, multicast.
#include "tests/switch/operations/operation_table.h"

namespace obtest {
namespace {

constexpr const char* kInvalidLanPort = "Invalid LanPortIdx={p}, DevIdx={d}";

const uint8_t kMac[6] = {0x02, 0x00, 0x00, 0x00, 0x12, 0x34};
MacTable macTable;

void StoreMapping(SwitchDeviceRecord& record, int port)
{
    MacToVlanEntry& entry = record.config.macToVlanTable[0];
    std::copy(kMac, kMac + 6, entry.Mac);
    entry.VlanId = 100;
    entry.Mask = 0xFFF;
    entry.LogPort = static_cast<uint8_t>(port);
    entry.EnableMapping = 1;
}

}  // namespace

std::vector<Operation> BridgingOperations()
{
    return {
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
    };
}

}  // namespace obtest
