// The MAC table.
#include <algorithm>
#include <cctype>
#include <cstddef>

#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/vswitch/vswitch_ioctl.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/mac_table.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool Passes(const Call& call, const Model& entry)
{
    // An entry of an unknown layout is never filtered out.
    if (entry.contains("raw"))
        return true;
    if (call.Has("--vlan") && entry["vlan"] != call.As<unsigned>("--vlan"))
        return false;
    if (call.Has("--prefix") &&
        !entry["mac"].get<std::string>().starts_with(LowerCase(call.Word("--prefix"))))
        return false;
    if (!call.Has("--port"))
        return true;
    const PortId port = *FindPort(call.Word("--port"));
    return entry["switch"] == port.device && entry["port"] == port.port;
}

// The table is the chip's own: of a switch that is down there is none to show.
void RequireOneEnabled(const SwitchDeviceRegion& region, const std::vector<unsigned>& devices)
{
    for (const unsigned device : devices)
        if (IsEnabled(region.device[device]))
            return;
    if (!devices.empty())
        throw Failure{kUnsupported, DownText(region.device[devices.front()], devices.front())};
}

Model ListMacs(Call& call)
{
    const auto region = ReadSwitches();
    if (call.Has("--port"))
        RequirePort(region, *FindPort(call.Word("--port")));
    Model entries = Model::array();
    const auto devices = SwitchesOf(call, region);
    RequireOneEnabled(region, devices);
    for (const unsigned device : devices) {
        if (!IsEnabled(region.device[device]))
            continue;
        for (auto& entry : MacEntries(region.device[device], device))
            if (Passes(call, entry))
                entries.push_back(std::move(entry));
    }
    Model model;
    if (call.Has("--count"))
        model["count"] = entries.size();
    else
        model["entries"] = std::move(entries);
    return model;
}

Model ShowTable(Call& call)
{
    const SwitchTarget target(call);
    MacTable table;
    Check(ORBLINK_GetMacTable(target.device, &table), target.object, "ORBLINK_GetMacTable");
    Model model;
    model["entries"] = Model::array();
    for (uint32_t i = 0; i < std::min<uint32_t>(table.count, OB_MAC_TABLE_ENTRIES); ++i)
        model["entries"].push_back(MacEntryModel(target.Record(), target.device, table.entry[i]));
    model["more"] = table.overflow != 0;
    return model;
}

Model FindMac(Call& call)
{
    const auto region = ReadSwitches();
    const MacAddress mac = *ParseMac(call.Word("MAC"));
    const std::string wanted = MacWord(mac.data());
    Model entries = Model::array();
    const auto devices = SwitchesOf(call, region);
    RequireOneEnabled(region, devices);
    for (const unsigned device : devices) {
        if (!IsEnabled(region.device[device]))
            continue;
        for (auto& entry : MacEntries(region.device[device], device))
            if (entry.contains("mac") && entry["mac"] == wanted)
                entries.push_back(std::move(entry));
    }
    if (entries.empty())
        throw Failure{kNoSuchObject, "no switch knows " + wanted +
                                         ": it has sent nothing, or not lately: orblinkctl aging"};
    Model model;
    model["entries"] = std::move(entries);
    return model;
}

// Only the chip's own commands reach these, and of those two HALs alone they are known here.
static_assert(LINUX_SWITCH_IOCTL_FLUSH_MAC == VSWITCH_IOCTL_FLUSH_MAC);
static_assert(LINUX_SWITCH_IOCTL_ADD_STATIC_MAC == VSWITCH_IOCTL_ADD_STATIC_MAC);
static_assert(LINUX_SWITCH_IOCTL_DELETE_MAC == VSWITCH_IOCTL_DELETE_MAC);
static_assert(sizeof(LinuxSwitchStaticMac) == sizeof(VswitchStaticMac));
static_assert(offsetof(LinuxSwitchStaticMac, vlanId) == offsetof(VswitchStaticMac, vlanId));
static_assert(offsetof(LinuxSwitchStaticMac, port) == offsetof(VswitchStaticMac, port));

void RequireOwnCommands(const SwitchDeviceRecord& record, unsigned device)
{
    if (!IsEnabled(record))
        throw Failure{kUnsupported, DownText(record, device)};
    if (!IsVs08(record) && !IsLinuxSwitch(record))
        throw Failure{kUnsupported, SwitchObject(device) +
                                        ": the commands of its chip are not known: orblinkctl "
                                        "ioctl"};
}

Model Flush(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["changes"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        RequireOwnCommands(region.device[device], device);
        Check(ORBLINK_VendorSpecificIoctl(static_cast<uint8_t>(device), VSWITCH_IOCTL_FLUSH_MAC,
                                          nullptr),
              SwitchObject(device), "ORBLINK_VendorSpecificIoctl");
        model["changes"].push_back(
            Change(SwitchObject(device), "learnt addresses", "forgotten", true)["changes"].front());
    }
    return model;
}

Model RunStatic(Call& call, int command, const char* done)
{
    const PortTarget target(call);
    RequireOwnCommands(target.Record(), target.id.device);
    const MacAddress mac = *ParseMac(call.Word("MAC"));
    if ((mac[0] & 1) != 0)
        throw Failure{kUsage, MacWord(mac.data()) + " is a group address: no station has it"};
    VswitchStaticMac parameter = {};
    std::copy(mac.begin(), mac.end(), parameter.mac);
    parameter.vlanId = call.As<uint16_t>("VID");
    parameter.port = target.Port();
    Check(ORBLINK_VendorSpecificIoctl(target.Device(), command, &parameter),
          target.object + " address " + MacWord(mac.data()), "ORBLINK_VendorSpecificIoctl");
    return Change(target.object, "mac " + MacWord(mac.data()) + " vlan " + call.Word("VID"), done,
                  true);
}

Model AddStatic(Call& call)
{
    return RunStatic(call, VSWITCH_IOCTL_ADD_STATIC_MAC, "static");
}
Model RemoveStatic(Call& call)
{
    return RunStatic(call, VSWITCH_IOCTL_DELETE_MAC, "removed");
}

constexpr Command kMacCommands[] = {
    {"mac [SWITCH]", "--vlan --port --prefix --count", "the MAC table of the enabled switches",
     "ORBLINK_ForEachMacEntry", ListMacs, PrintModel},
    {"mac SWITCH table", "",
     "the first 256 entries, copied at one moment, and whether there are more",
     "ORBLINK_GetMacTable", ShowTable, PrintModel},
    {"mac MAC", "", "where a station is", "ORBLINK_ForEachMacEntry", FindMac, PrintModel},
    {"mac flush [SWITCH]", "", "forget every learnt address", "ORBLINK_VendorSpecificIoctl", Flush,
     PrintChanges},
    {"mac add PORT MAC VID", "", "bind a station to a port: a static entry",
     "ORBLINK_VendorSpecificIoctl", AddStatic, PrintChanges},
    {"mac remove PORT MAC VID", "", "take an entry away, static or learnt",
     "ORBLINK_VendorSpecificIoctl", RemoveStatic, PrintChanges},
};

}  // namespace

std::span<const Command> MacCommands()
{
    return kMacCommands;
}

}  // namespace ctl
