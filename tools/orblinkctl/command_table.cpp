#include <cctype>

#include "tools/orblinkctl/commands.h"
#include "tools/orblinkctl/names.h"
#include "tools/orblinkctl/text.h"

namespace ctl {

namespace {

std::string Heading(const std::string& key)
{
    std::string heading = key;
    for (char& c : heading)
        c = c == '_' ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return heading;
}

std::string CellText(const Model& value)
{
    if (value.is_boolean())
        return YesNo(value);
    if (!value.is_array())
        return Text(value);
    std::string list;
    for (const auto& entry : value)
        list += (list.empty() ? "" : " ") + Text(entry);
    return list.empty() ? "-" : list;
}

void PrintObjects(const std::string& key, const Model& list, std::string& out)
{
    if (list.empty())
        return Line(out, {"no ", key});
    std::vector<std::string> headings;
    for (const auto& [name, value] : list.front().items())
        headings.push_back(Heading(name));
    Table table(std::move(headings));
    for (const auto& entry : list) {
        std::vector<std::string> cells;
        for (const auto& [name, value] : entry.items())
            cells.push_back(CellText(value));
        table.Row(std::move(cells));
    }
    table.Print(out);
}

}  // namespace

void PrintModel(const Model& model, std::string& out)
{
    for (const auto& [key, value] : model.items()) {
        if (value.is_array() && (value.empty() || value.front().is_object()))
            PrintObjects(key, value, out);
        else
            Line(out, {key, ": ", CellText(value)});
    }
}

void PrintNothing(const Model&, std::string&) {}

void PrintChanges(const Model& model, std::string& out)
{
    for (const auto& change : model["changes"]) {
        const char* how = change["applied"].get<bool>() ? "" : " (stored for the next bring-up)";
        Line(out, {Text(change["object"]), ": ", Text(change["setting"]), " ",
                   CellText(change["value"]), how});
    }
}

SwitchTarget::SwitchTarget(const Call& call)
    : region(ReadSwitches()), device(call.As<uint8_t>("SWITCH")), object(SwitchObject(device))
{
    SwitchOf(region, device);
}

PortTarget::PortTarget(const Call& call)
    : region(ReadSwitches()), id(*FindPort(call.Word("PORT"))), object(PortObject(id))
{
    RequirePort(region, id);
}

void PortTarget::RequireLanPort() const
{
    if (id.port == 0)
        throw Failure{kUnsupported, object + ": not a LAN port; those are ports 1 to " +
                                        std::to_string(PortCount(Record()) - 1)};
}

void PortTarget::RequirePhyPort() const
{
    if (!HasPhy())
        throw Failure{kUnsupported, object + ": no PHY is attached to it"};
}

void PortTarget::RequireCapability(uint8_t flag, const char* name) const
{
    if ((Record().caps.capsFlags & flag) == 0)
        throw Failure{kUnsupported, SwitchObject(id.device) + " does not support " + name};
}

PhyTarget::PhyTarget(const Call& call)
    : region(ReadPhys()),
      device(static_cast<uint8_t>(*FindPhy(call.Word("PHY")))),
      object(PhyObject(device))
{
    PhyOf(region, device);
}

std::vector<unsigned> SwitchesOf(const Call& call, const SwitchDeviceRegion& region)
{
    if (call.Has("SWITCH")) {
        const auto device = call.As<unsigned>("SWITCH");
        SwitchOf(region, device);
        return {device};
    }
    std::vector<unsigned> all;
    for (unsigned device = 0; device < region.NumOfSwitches; ++device)
        all.push_back(device);
    return all;
}

std::span<const CommandGroup> CommandGroups()
{
    static const CommandGroup groups[] = {
        {"The board", BoardCommands()},
        {"Switches", SwitchCommands()},
        {"Ports", PortCommands()},
        {"VLANs and bridging", VlanCommands()},
        {"Switch-wide features", FeatureCommands()},
        {"MAC table", MacCommands()},
        {"PHYs", PhyCommands()},
        {"Registers", RegisterCommands()},
        {"Configuration", ConfigCommands()},
        {"Watching", WatchCommands()},
        {"Measured values", MetricsCommands()},
        {"The library's log", LogCommands()},
        {"Support", BundleCommands()},
        {"The program", ProgramCommands()},
    };
    return groups;
}

}  // namespace ctl
