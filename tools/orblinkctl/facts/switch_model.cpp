#include "tools/orblinkctl/facts/switch_model.h"

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/access/refusals.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/meanings.h"

namespace ctl {

namespace {

Model OptionalText(const std::string& text)
{
    return text.empty() ? Model() : Model(text);
}

bool HasBit(uint8_t bits, unsigned port)
{
    return (bits >> port & 1) != 0;
}

std::string DuplexWord(uint32_t full)
{
    return full != 0 ? "full" : "half";
}

Model BridgeMode(uint32_t stored)
{
    // 0 leaves the chip as its reset does, any other value switches it off.
    return stored == 1 ? "provider" : "off";
}

std::string Role(const SwitchDeviceRecord& record, unsigned port)
{
    if (record.board.internalPortPidx == port)
        return "internal";
    if (record.caps.port[port].portHasPhy != 0)
        return "phy";
    return ModeWord(record.caps.port[port].portIfaceType);
}

}  // namespace

std::string StateWord(uint32_t state)
{
    if (state == OB_STATE_ENABLED)
        return "enabled";
    return state == OB_STATE_RESET ? "in reset" : state == 0 ? "never brought up" : "unknown";
}

Model BoardEntry(const SwitchBoardEntry& entry)
{
    Model model;
    model["hal"] = Printable(NameIn(entry.halLibName));
    model["lane"] = entry.serdesId;
    model["internal_port"] = Optional(entry.internalPortPidx, UINT32_MAX);
    model["interface"] = ModeWord(entry.internalPortIfaceMode);
    model["interface_speed"] = SpeedWord(entry.internalPortIfaceSpeed);
    model["mdio_bus"] = Optional(entry.mdioBus, 0xFF);
    model["mdio_address"] = Optional(entry.mdioAddr, 0xFF);
    model["reset_pin"] = Optional(entry.resetGpioPin, OB_NO_GPIO_PIN);
    model["enable_pin"] = Optional(entry.enableGpioPin, OB_NO_GPIO_PIN);
    model["pre_reset_argument"] = entry.preResetArg;
    return model;
}

Model StoredSwitch(const SwitchDeviceRecord& record, unsigned device)
{
    RequireSane(record, device);
    const auto& config = record.config;
    Model model;
    model["switch"] = device;
    model["state"] = StateWord(config.state);
    model["ports"] = record.capsValid != 0 ? Model(PortCount(record)) : Model();
    model["board"] = record.bsdValid != 0 ? BoardEntry(record.board) : Model();
    model["hal_index"] = Optional(record.halIdx, OB_NO_HAL_INDEX);
    model["config_valid"] = record.configValid != 0;
    model["bridge_mode"] = BridgeMode(config.InProviderBridgedMode);
    model["bridge_tpid"] = config.STagTpid;
    model["igmp"] = config.igmpSnooping == 1;
    model["mtu"] = config.mtuSize;
    model["led"] = ValueModel("led", config.ledMode, record);
    model["aging"] = ValueModel("aging", static_cast<uint32_t>(config.macAging), record);
    model["service"] = record.serviceStatus;
    return model;
}

Model StoredPort(const SwitchDeviceRecord& record, PortId id)
{
    RequireSane(record, id.device);
    const auto& config = record.config;
    const unsigned port = id.port;
    Model model;
    model["switch"] = id.device;
    model["port"] = port;
    model["label"] = OptionalText(PortLabel(id.device, port));
    model["role"] = Role(record, port);
    model["enabled"] = HasBit(config.enabledPorts, port);
    model["speed"] = SpeedModel(config.link[port].linkSpeed);
    model["duplex"] = DuplexWord(config.link[port].linkFullDuplex);
    model["vlan"] = config.lanPortVlan[port];
    model["pcp"] = config.lanPortPcp[port];
    model["tagging"] = ValueModel("tagging", config.egressTagging[port], record);
    model["group"] = Optional(static_cast<uint32_t>(config.groupId[port]), UINT32_MAX);
    model["group_locked"] = config.groupIdLock[port] != 0;
    model["eee"] = HasBit(config.eeePorts, port);
    model["mirror_to"] = Optional(config.mirrorDst[port], OB_NO_MIRROR);
    model["delay"] = HasBit(config.rgmiiDelayPorts, port);
    model["dvt"] = HasBit(record.dvtPorts, port);
    return model;
}

Model StoredPorts(const SwitchDeviceRegion& region)
{
    Model ports = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device)
        for (unsigned port = 0; port < PortCount(region.device[device]); ++port)
            ports.push_back(StoredPort(region.device[device], {device, port}));
    return ports;
}

void AddLink(Model& model, const SwitchDeviceRecord& record, PortId id)
{
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    for (const char* key : {"link", "link_speed", "link_duplex", "error"})
        model[key] = nullptr;
    if (!IsEnabled(record))
        return;
    Enter(Family::kSwitch);
    if (ORBLINK_GetPortLink(static_cast<uint8_t>(id.device), static_cast<uint8_t>(id.port), &link,
                            &speed, &duplex) != 0) {
        model["error"] = RefusalOf(PortObject(id), "ORBLINK_GetPortLink").text;
        DropHeldLogLines();
        return;
    }
    model["link"] = link != 0;
    if (link == 0)
        return;
    model["link_speed"] = SpeedModel(speed);
    model["link_duplex"] = DuplexWord(duplex);
}

Model LivePorts(const SwitchDeviceRegion& region)
{
    Model ports = StoredPorts(region);
    for (auto& port : ports) {
        const unsigned device = port["switch"].get<unsigned>();
        AddLink(port, region.device[device], {device, port["port"].get<unsigned>()});
    }
    return ports;
}

bool AnyError(const Model& entries)
{
    for (const auto& entry : entries)
        if (entry.contains("error") && !entry["error"].is_null())
            return true;
    return false;
}

Model MacVlanEntries(const MacToVlanEntry* table, unsigned device)
{
    Model entries = Model::array();
    for (unsigned i = 0; i < OB_MAC_VLAN_ENTRIES; ++i) {
        if (table[i].EnableMapping == 0)
            continue;
        Model entry;
        entry["switch"] = device;
        entry["port"] = table[i].LogPort;
        entry["mac"] = MacWord(table[i].Mac);
        entry["mask"] = table[i].Mask;
        entry["vlan"] = table[i].VlanId;
        entries.push_back(std::move(entry));
    }
    return entries;
}

Model Capabilities(const SwitchCaps& caps, unsigned device)
{
    Model model;
    model["switch"] = device;
    model["ports"] = caps.numOfPorts;
    model["snooping"] = (caps.capsFlags & OB_CAPS_NO_SNOOPING) == 0;
    model["eee"] = (caps.capsFlags & OB_CAPS_EEE) != 0;
    model["mirroring"] = (caps.capsFlags & OB_CAPS_MIRRORING) != 0;
    model["port_capabilities"] = Model::array();
    for (unsigned port = 0; port < std::min<unsigned>(caps.numOfPorts, OB_MAX_PORTS); ++port) {
        Model entry;
        entry["port"] = port;
        entry["interface"] = ModeWord(caps.port[port].portIfaceType);
        entry["has_phy"] = caps.port[port].portHasPhy != 0;
        model["port_capabilities"].push_back(std::move(entry));
    }
    return model;
}

}  // namespace ctl
