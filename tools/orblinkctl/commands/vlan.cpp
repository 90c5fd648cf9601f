// VLAN settings of the ports, provider bridged mode and the MAC-to-VLAN table.

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/meanings.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

Model VlanOf(const SwitchDeviceRecord& record, PortId id)
{
    const Model all = StoredPort(record, id);
    Model model;
    for (const char* key :
         {"switch", "port", "label", "role", "vlan", "pcp", "tagging", "group", "group_locked"})
        model[key] = all[key];
    return model;
}

Model ListVlans(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["ports"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region))
        for (unsigned port = 1; port < PortCount(region.device[device]); ++port)
            model["ports"].push_back(VlanOf(region.device[device], {device, port}));
    return model;
}

Model ShowVlan(Call& call)
{
    const PortTarget target(call);
    Model model;
    model["ports"] = Model::array({VlanOf(target.Record(), target.id)});
    return model;
}

// The four LAN-port setters.
template <typename Set>
Model SetLanPort(Call& call, const char* setting, Model value, const char* operation, Set set)
{
    const PortTarget target(call);
    target.RequireLanPort();
    Check(set(target.Device(), target.Port()), target.object, operation);
    return Change(target.object, setting, std::move(value), target.Enabled());
}

Model SetVlan(Call& call)
{
    const int vid = call.As<int>("VID");
    return SetLanPort(call, "vlan", vid, "ORBLINK_SetLanPortVlan", [&](uint8_t dev, uint8_t port) {
        return ORBLINK_SetLanPortVlan(dev, port, vid);
    });
}

Model SetPcp(Call& call)
{
    const auto pcp = call.As<uint8_t>("PCP");
    return SetLanPort(call, "pcp", pcp, "ORBLINK_SetLanPortPcp", [&](uint8_t dev, uint8_t port) {
        return ORBLINK_SetLanPortPcp(dev, port, pcp);
    });
}

Model SetTagging(Call& call)
{
    const uint32_t tagging = *ParseValue("tagging", call.Word("TAGGING"));
    const PortTarget target(call);
    RequireOffered("tagging", tagging, target.Record(), target.object);
    return SetLanPort(call, "tagging", ValueModel("tagging", tagging, target.Record()),
                      "ORBLINK_SetLanPortEgressTagging", [&](uint8_t dev, uint8_t port) {
                          return ORBLINK_SetLanPortEgressTagging(dev, port, tagging);
                      });
}

uint32_t LockState(const Call& call)
{
    if (call.Has("--lock") && call.Has("--unlock"))
        throw Failure{kUsage, "--lock and --unlock exclude each other"};
    return call.Has("--lock") ? 1 : call.Has("--unlock") ? 2 : 0;
}

Model SetGroup(Call& call)
{
    const bool none = call.Word("GROUP") == "none";
    const uint32_t group = none ? UINT32_MAX : call.As<uint32_t>("GROUP");
    const uint32_t lock = LockState(call);
    const PortTarget target(call);
    target.RequireLanPort();
    if (!none)
        RequireOffered("group", group, target.Record(), target.object);
    if (!none)
        target.RequireForceForInternal(call, "puts it into a group, apart from the other ports");
    // The library would succeed silently and write nothing.
    if (lock == 0 && target.Record().config.groupIdLock[target.id.port] != 0)
        throw Failure{kUnsupported,
                      target.object + ": the group is locked: write with --lock or --unlock"};
    Check(ORBLINK_SetLanPortGroupId(target.Device(), target.Port(), group, lock), target.object,
          "ORBLINK_SetLanPortGroupId");
    return Change(target.object, "group", none ? Model() : Model(group), target.Enabled());
}

Model ShowBridgeMode(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["switches"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        const Model all = StoredSwitch(region.device[device], device);
        Model entry;
        for (const char* key : {"switch", "bridge_mode", "bridge_tpid"})
            entry[key] = all[key];
        model["switches"].push_back(std::move(entry));
    }
    return model;
}

// The identifier that IEEE 802.1 gives to service tags.
constexpr uint16_t kServiceTpid = 0x88A8;

Model BridgeModeOn(Call& call)
{
    const SwitchTarget target(call);
    const uint16_t tpid = call.Has("TPID") ? call.As<uint16_t>("TPID") : kServiceTpid;
    RequireOffered("bridge_tpid", tpid, target.Record(), target.object);
    Check(ORBLINK_EnableProviderBridgedMode(target.device, tpid), target.object,
          "ORBLINK_EnableProviderBridgedMode");
    Model model = Change(target.object, "bridge_mode", "provider", target.Enabled());
    model["changes"].push_back(
        Change(target.object, "bridge_tpid", tpid, target.Enabled())["changes"].front());
    return model;
}

Model BridgeModeOff(Call& call)
{
    const SwitchTarget target(call);
    Check(ORBLINK_DisableProviderBridgedMode(target.device), target.object,
          "ORBLINK_DisableProviderBridgedMode");
    return Change(target.object, "bridge_mode", "off", target.Enabled());
}

Model ListMacVlans(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["mac_vlans"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        RequireSane(region.device[device], device);
        MacToVlanEntry table[OB_MAC_VLAN_ENTRIES];
        Check(ORBLINK_GetMactoVlanTable(static_cast<uint8_t>(device), table), SwitchObject(device),
              "ORBLINK_GetMactoVlanTable");
        for (auto& entry : MacVlanEntries(table, device))
            model["mac_vlans"].push_back(std::move(entry));
    }
    return model;
}

constexpr MacAddress kBroadcast = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

// The second digit of an address tells a group from one station.
constexpr uint16_t kMaskOfGroupDigit = 0x400;

// As the library keeps an address: digits that do not count are 0xF.
MacAddress Masked(const MacAddress& mac, uint16_t mask)
{
    MacAddress masked = mac;
    for (unsigned digit = 0; digit < 12; ++digit)
        if ((mask >> (11 - digit) & 1) == 0)
            masked[digit / 2] |= digit % 2 == 0 ? 0xF0 : 0x0F;
    return masked;
}

void RequireMapped(const PortTarget& target, const MacAddress& mac, uint16_t mask)
{
    const MacAddress wanted = Masked(mac, mask);
    for (const auto& entry : target.Record().config.macToVlanTable)
        if (entry.EnableMapping != 0 && entry.LogPort == target.id.port &&
            std::equal(wanted.begin(), wanted.end(), entry.Mac))
            return;
    throw Failure{kNoSuchObject, target.object + ": no MAC-to-VLAN entry " + MacWord(mac.data()) +
                                     ", mask " + Hex(mask, 3) + ": orblinkctl mac-vlan"};
}

Model MapMac(Call& call, uint16_t vid, bool add)
{
    const PortTarget target(call);
    target.RequireLanPort();
    const MacAddress mac = *ParseMac(call.Word("MAC"));
    const uint16_t mask = call.Has("--mask") ? call.As<uint16_t>("--mask") : uint16_t{0xFFF};
    if (add && (mac[0] & 1) != 0 && (mask & kMaskOfGroupDigit) != 0)
        throw Failure{
            kUsage, MacWord(mac.data()) +
                        (mac == kBroadcast ? " is the broadcast address" : " is a group address") +
                        ": no frame comes from it"};
    if (!add)
        RequireMapped(target, mac, mask);
    Check(ORBLINK_MapMactoVlan(target.Device(), target.Port(), mac.data(), mask, vid, add ? 1 : 0),
          target.object, "ORBLINK_MapMactoVlan");
    Model value;
    if (add)
        value = vid;
    return Change(target.object, "mac-vlan " + MacWord(mac.data()), value, target.Enabled());
}

Model AddMacVlan(Call& call)
{
    return MapMac(call, call.As<uint16_t>("VID"), true);
}
Model RemoveMacVlan(Call& call)
{
    return MapMac(call, 0, false);
}

constexpr Command kVlanCommands[] = {
    {"vlan [SWITCH]", "", "VLAN, priority, tagging and group of every LAN port",
     "ORBLINK_GetSwitchDevices", ListVlans, PrintModel},
    {"port PORT vlan", "", "VLAN, priority, tagging and group of a port",
     "ORBLINK_GetSwitchDevices", ShowVlan, PrintModel},
    {"port PORT vlan VID", "", "set the VLAN of a LAN port", "ORBLINK_SetLanPortVlan", SetVlan,
     PrintChanges},
    {"port PORT pcp", "", "VLAN, priority, tagging and group of a port", "ORBLINK_GetSwitchDevices",
     ShowVlan, PrintModel},
    {"port PORT pcp PCP", "", "set the priority code point of a LAN port", "ORBLINK_SetLanPortPcp",
     SetPcp, PrintChanges},
    {"port PORT tagging", "", "VLAN, priority, tagging and group of a port",
     "ORBLINK_GetSwitchDevices", ShowVlan, PrintModel},
    {"port PORT tagging TAGGING", "", "set the egress tagging of a LAN port",
     "ORBLINK_SetLanPortEgressTagging", SetTagging, PrintChanges},
    {"port PORT group", "", "VLAN, priority, tagging and group of a port",
     "ORBLINK_GetSwitchDevices", ShowVlan, PrintModel},
    {"port PORT group GROUP", "--lock --unlock --force", "set the group of a LAN port",
     "ORBLINK_SetLanPortGroupId", SetGroup, PrintChanges},
    {"bridge-mode [SWITCH]", "", "provider bridged mode and its TPID", "ORBLINK_GetSwitchDevices",
     ShowBridgeMode, PrintModel},
    {"bridge-mode SWITCH on [TPID]", "",
     "provider bridged mode on, with service tags of 0x88a8 if no TPID is given",
     "ORBLINK_EnableProviderBridgedMode", BridgeModeOn, PrintChanges},
    {"bridge-mode SWITCH provider [TPID]", "", "the same as on",
     "ORBLINK_EnableProviderBridgedMode", BridgeModeOn, PrintChanges},
    {"bridge-mode SWITCH off", "", "provider bridged mode off",
     "ORBLINK_DisableProviderBridgedMode", BridgeModeOff, PrintChanges},
    {"mac-vlan [SWITCH]", "", "the VLANs given by source address", "ORBLINK_GetMactoVlanTable",
     ListMacVlans, PrintModel},
    {"mac-vlan add PORT MAC VID", "--mask", "give frames from an address a VLAN",
     "ORBLINK_MapMactoVlan", AddMacVlan, PrintChanges},
    {"mac-vlan remove PORT MAC", "--mask", "no longer give frames from an address a VLAN",
     "ORBLINK_MapMactoVlan", RemoveMacVlan, PrintChanges},
};

}  // namespace

std::span<const Command> VlanCommands()
{
    return kVlanCommands;
}

}  // namespace ctl
