#include "tools/orblinkctl/config/config_model.h"

#include <map>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/meanings.h"
#include "tools/orblinkctl/facts/switch_model.h"

namespace ctl {

namespace {

Model PortConfig(const SwitchDeviceRecord& record, PortId id)
{
    const Model stored = StoredPort(record, id);
    const auto& caps = record.caps.port[id.port];
    Model port = Model::object();
    const auto take = [&](std::initializer_list<const char*> keys) {
        for (const char* key : keys)
            port[key] = stored[key];
    };
    take({"enabled"});
    if ((record.caps.capsFlags & OB_CAPS_MIRRORING) != 0)
        port["mirror_to"] = stored["mirror_to"].is_null() ? Model("off") : stored["mirror_to"];
    if (caps.portHasPhy != 0 && (record.caps.capsFlags & OB_CAPS_EEE) != 0)
        take({"eee"});
    if (caps.portHasPhy != 0)
        take({"speed", "duplex"});
    else if (caps.portIfaceType == OB_IFACE_RGMII)
        take({"delay"});
    if (id.port == 0)
        return port;
    take({"vlan", "pcp", "tagging", "group_locked"});
    port["group"] = stored["group"].is_null() ? Model("none") : stored["group"];
    return port;
}

Model MacVlanConfig(const SwitchDeviceRecord& record)
{
    Model entries = Model::object();
    for (const auto& entry : MacVlanEntries(record.config.macToVlanTable, 0)) {
        Model value;
        value["mask"] = entry["mask"];
        value["vlan"] = entry["vlan"];
        entries[entry["port"].dump() + " " + entry["mac"].get<std::string>()] = std::move(value);
    }
    return entries;
}

Model SwitchConfig(const SwitchDeviceRecord& record, unsigned device)
{
    const Model stored = StoredSwitch(record, device);
    Model config;
    for (const char* key : {"mtu", "led", "aging", "service"})
        config[key] = stored[key];
    config["bridge_mode"] = stored["bridge_mode"] == "provider";
    // While the mode is off the stored identifier has no effect.
    if (config["bridge_mode"] == true)
        config["bridge_tpid"] = stored["bridge_tpid"];
    if ((record.caps.capsFlags & OB_CAPS_NO_SNOOPING) == 0)
        config["igmp"] = stored["igmp"];
    config["port"] = Model::object();
    for (unsigned port = 0; port < PortCount(record); ++port)
        config["port"][std::to_string(port)] = PortConfig(record, {device, port});
    config["mac_vlan"] = MacVlanConfig(record);
    return config;
}

// Leaves of a tree: path and value.
template <typename Visit>
void ForEachSetting(const Model& tree, std::vector<std::string>& path, const Visit& visit)
{
    for (const auto& [key, value] : tree.items()) {
        path.push_back(key);
        if (value.is_object())
            ForEachSetting(value, path, visit);
        else
            visit(path, value);
        path.pop_back();
    }
}

Model AtPath(const Model& tree, const std::vector<std::string>& path)
{
    const Model* at = &tree;
    for (const auto& key : path) {
        if (!at->is_object() || !at->contains(key))
            return nullptr;
        at = &(*at)[key];
    }
    return *at;
}

std::string TomlValue(const Model& value)
{
    return value.dump();
}

std::string TomlKey(const std::string& key)
{
    const bool bare = key.find_first_of(" :") == std::string::npos;
    return bare ? key : "\"" + key + "\"";
}

void AddTable(const Model& tree, const std::string& name, std::string& out)
{
    const auto sorted = tree.get<std::map<std::string, Model>>();
    std::string settings;
    for (const auto& [key, value] : sorted)
        if (!value.is_object())
            settings += TomlKey(key) + " = " + TomlValue(value) + "\n";
    if (!settings.empty())
        out += "\n[" + name + "]\n" + settings;
    for (const auto& [key, value] : sorted)
        if (value.is_object())
            AddTable(value, name.empty() ? TomlKey(key) : name + "." + TomlKey(key), out);
}

// Older files have speeds as words, and numbers where there are words today.
bool SameSetting(const std::string& key, const Model& one, const Model& other)
{
    return key == "speed" ? Text(one) == Text(other) : SameValue(key, one, other);
}

bool IsMacVlan(const std::vector<std::string>& path)
{
    return path.size() == 5 && path[2] == "mac_vlan";
}

void AddSurplusMacs(const Model& board, const Model& wanted, std::vector<ConfigDifference>& list)
{
    if (!wanted.contains("switch"))
        return;
    for (const auto& [device, config] : wanted["switch"].items()) {
        const Model there = AtPath(board, {"switch", device, "mac_vlan"});
        if (!there.is_object() || !config.contains("mac_vlan"))
            continue;
        for (const auto& [entry, value] : there.items())
            if (!config["mac_vlan"].contains(entry))
                list.push_back({{"switch", device, "mac_vlan", entry, "vlan"}, value["vlan"], {}});
    }
}

}  // namespace

Model CurrentConfig()
{
    Model config;
    config["switch"] = config["phy"] = Model::object();
    if (IsInitialised(Family::kSwitch)) {
        const auto region = ReadSwitches();
        for (unsigned device = 0; device < region.NumOfSwitches; ++device)
            config["switch"][std::to_string(device)] = SwitchConfig(region.device[device], device);
    }
    if (IsInitialised(Family::kPhy)) {
        const auto region = ReadPhys();
        for (unsigned device = 0; device < region.NumOfPhys; ++device) {
            RequireSane(region.phy[device], device);
            config["phy"][std::to_string(device)]["admin"] =
                region.phy[device].config.adminState != 0;
        }
    }
    return config;
}

Model DefaultConfig(const Model& current)
{
    static const std::map<std::string, Model> defaults = {
        {"mtu", 2000},
        {"led", "link+activity"},
        {"aging", "300s"},
        {"bridge_mode", false},
        {"igmp", false},
        {"enabled", true},
        {"mirror_to", "off"},
        {"speed", "auto"},
        {"duplex", "full"},
        {"delay", false},
        {"vlan", 1},
        {"pcp", 0},
        {"tagging", "untagged"},
        {"group_locked", true},
        {"group", "none"},
        {"admin", true},
    };
    constexpr int kEeePorts = 6;
    Model wanted = Model::object();
    std::vector<std::string> path;
    ForEachSetting(current, path, [&](const std::vector<std::string>& at, const Model&) {
        const std::string& key = at.back();
        if (IsMacVlan(at))
            return;
        Model* place = &wanted;
        for (const auto& step : at)
            place = &(*place)[step];
        if (key == "eee")
            *place = std::stoi(at[3]) < kEeePorts;
        else if (const auto found = defaults.find(key); found != defaults.end())
            *place = found->second;
        else
            *place = AtPath(current, at);
    });
    for (const auto& [device, config] : current["switch"].items()) {
        wanted["switch"][device].erase("bridge_tpid");
        wanted["switch"][device]["mac_vlan"] = Model::object();
    }
    return wanted;
}

std::string ConfigText(const Model& config)
{
    std::string out =
        "# Configuration of the board as orblinkctl saved it.\n"
        "# [switch.N] a switch, [switch.N.port.P] a port of it,\n"
        "# [switch.N.mac_vlan.\"P MAC\"] the VLAN of a source address, [phy.N] a PHY.\n"
        "\nschema = 1\n";
    AddTable(config, "", out);
    // An empty table says that there are no mapped addresses.
    for (const auto& [device, tree] : config["switch"].items())
        if (tree.contains("mac_vlan") && tree["mac_vlan"].empty())
            out += "\n[switch." + device + ".mac_vlan]\n";
    return out;
}

std::vector<ConfigDifference> Differences(const Model& board, const Model& wanted)
{
    std::vector<ConfigDifference> list;
    std::vector<std::string> path;
    ForEachSetting(wanted, path, [&](const std::vector<std::string>& at, const Model& value) {
        const Model there = AtPath(board, at);
        if (!SameSetting(at.back(), there, value))
            list.push_back({at, there, value});
    });
    AddSurplusMacs(board, wanted, list);
    return list;
}

std::string PathText(const std::vector<std::string>& path)
{
    std::string text;
    for (const auto& step : path)
        text += (text.empty() ? "" : ".") + TomlKey(step);
    return text;
}

}  // namespace ctl
