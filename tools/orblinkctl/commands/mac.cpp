// The MAC table.
#include <algorithm>
#include <cctype>

#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/json.h"
#include "tools/orblinkctl/facts/mac_table.h"
#include "tools/orblinkctl/facts/names.h"
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

constexpr Command kMacCommands[] = {
    {"mac [SWITCH]", "--vlan --port --prefix --count", "the MAC table of the enabled switches",
     "ORBLINK_ForEachMacEntry", ListMacs, PrintModel},
    {"mac SWITCH table", "",
     "the first 256 entries, copied at one moment, and whether there are more",
     "ORBLINK_GetMacTable", ShowTable, PrintModel},
};

}  // namespace

std::span<const Command> MacCommands()
{
    return kMacCommands;
}

}  // namespace ctl
