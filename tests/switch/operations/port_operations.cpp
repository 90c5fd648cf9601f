// The rows of the ports: counters, link, speed, EEE, mirror, tests.
#include "tests/switch/operations/operation_table.h"

namespace obtest {
namespace {

constexpr const char* kInvalidPort = "Invalid PortIdx={p}, DevIdx={d}";
constexpr const char* kInvalidEeePort = "Invalid PhyPortIdx={p} DevIdx={d}";
constexpr const char* kInvalidRgmiiPort = "Invalid RgmiiPortIdx={p}, DevIdx={d}";
constexpr const char* kNotEnabledNotice = "log2 Switch is not in enabled state, DevIdx={d}";

uint32_t out[64];

uint8_t With(uint8_t bitmap, int port)
{
    return static_cast<uint8_t>(bitmap | 1 << port);
}

uint8_t Without(uint8_t bitmap, int port)
{
    return static_cast<uint8_t>(bitmap & ~(1 << port));
}

}  // namespace

std::vector<Operation> PortOperations()
{
    return {
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
    };
}

}  // namespace obtest
