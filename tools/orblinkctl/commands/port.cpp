// Ports: links, settings, counters, tests.

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/meanings.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

Model Listed(const char* key, Model entry)
{
    Model model;
    model[key] = Model::array({std::move(entry)});
    return model;
}

// The named facts of one port.
Model Some(const PortTarget& target, std::initializer_list<const char*> keys)
{
    const Model all = StoredPort(target.Record(), target.id);
    Model some;
    some["switch"] = target.id.device;
    some["port"] = target.id.port;
    for (const char* key : keys)
        some[key] = all[key];
    return some;
}

Model Done(const PortTarget& target, const char* setting, Model value)
{
    return Change(target.object, setting, std::move(value), target.Enabled());
}

Model ListPorts(Call& call)
{
    Model model;
    model["ports"] = LivePorts(ReadSwitches());
    if (AnyError(model["ports"]))
        call.exitCode = kFailed;
    return model;
}

Model ShowPort(Call& call)
{
    const PortTarget target(call);
    Model port = StoredPort(target.Record(), target.id);
    AddLink(port, target.Record(), target.id);
    if (!port["error"].is_null())
        call.exitCode = kFailed;
    return Listed("ports", std::move(port));
}

Model ShowLink(Call& call)
{
    const PortTarget target(call);
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    Check(ORBLINK_GetPortLink(target.Device(), target.Port(), &link, &speed, &duplex),
          target.object, "ORBLINK_GetPortLink");
    Model model = Some(target, {});
    model["link"] = link != 0;
    model["link_speed"] = link != 0 ? SpeedModel(speed) : Model();
    model["link_duplex"] = link != 0 ? Model(duplex != 0 ? "full" : "half") : Model();
    return Listed("ports", std::move(model));
}

Model Enable(Call& call)
{
    const PortTarget target(call);
    Check(ORBLINK_EnablePort(target.Device(), target.Port()), target.object, "ORBLINK_EnablePort");
    return Done(target, "enabled", true);
}

Model Disable(Call& call)
{
    const PortTarget target(call);
    target.RequireForceForInternal(call, "disables it");
    Check(ORBLINK_DisablePort(target.Device(), target.Port()), target.object,
          "ORBLINK_DisablePort");
    return Done(target, "enabled", false);
}

Model ShowEnabled(Call& call)
{
    const PortTarget target(call);
    uint32_t enabled = 0;
    Check(ORBLINK_GetPortEnable(target.Device(), target.Port(), &enabled), target.object,
          "ORBLINK_GetPortEnable");
    Model port = Some(target, {});
    port["enabled"] = enabled != 0;
    return Listed("ports", std::move(port));
}

Model ShowSpeed(Call& call)
{
    return Listed("ports", Some(PortTarget(call), {"speed", "duplex"}));
}

Model ForceLink(const PortTarget& target, uint32_t speed, uint32_t duplex)
{
    target.RequirePhyPort();
    RequireSpeed(speed, target.Record(), target.id.port, target.object);
    Check(ORBLINK_SetPhyPortSpeedDuplex(target.Device(), target.Port(), speed, duplex),
          target.object, "ORBLINK_SetPhyPortSpeedDuplex");
    Model model = Done(target, "speed", SpeedModel(speed));
    model["changes"].push_back(
        Done(target, "duplex", duplex != 0 ? "full" : "half")["changes"].front());
    return model;
}

Model SetSpeed(Call& call)
{
    const PortTarget target(call);
    const uint32_t speed = *ParseSpeed(call.Word("SPEED"));
    uint32_t duplex = target.Record().config.link[target.id.port].linkFullDuplex;
    if (speed == OB_SPEED_AUTONEG)
        duplex = 1;
    if (call.Has("DUPLEX"))
        duplex = call.Word("DUPLEX") == "full" ? 1 : 0;
    return ForceLink(target, speed, duplex);
}

Model SetDuplex(Call& call)
{
    const PortTarget target(call);
    return ForceLink(target, target.Record().config.link[target.id.port].linkSpeed,
                     call.Word("DUPLEX") == "full" ? 1 : 0);
}

Model ShowEee(Call& call)
{
    const PortTarget target(call);
    uint32_t state = 0;
    Check(ORBLINK_GetEeePortState(target.Device(), target.Port(), &state), target.object,
          "ORBLINK_GetEeePortState");
    Model port = Some(target, {"eee"});
    port["eee_on_chip"] = target.Enabled() ? Model(state != 0) : Model();
    return Listed("ports", std::move(port));
}

Model SetEee(Call& call)
{
    const PortTarget target(call);
    target.RequirePhyPort();
    target.RequireCapability(OB_CAPS_EEE, "802.3az");
    if (call.Word("ON-OFF") == "on")
        Check(ORBLINK_EnablePhyPortEee(target.Device(), target.Port()), target.object,
              "ORBLINK_EnablePhyPortEee");
    else
        Check(ORBLINK_DisablePhyPortEee(target.Device(), target.Port()), target.object,
              "ORBLINK_DisablePhyPortEee");
    return Done(target, "eee", call.Word("ON-OFF") == "on");
}

Model ShowMirror(Call& call)
{
    return Listed("ports", Some(PortTarget(call), {"mirror_to"}));
}

// A port as everywhere, or its number on the same switch.
uint8_t MirrorDestination(const Call& call, const PortTarget& target)
{
    const std::string& word = call.Word("DESTINATION");
    PortId id = *FindPort(word);
    if (ParseNumber(word))
        id.device = target.id.device;
    if (id.device != target.id.device)
        throw Failure{kUnsupported, target.object + " cannot be mirrored to " + PortObject(id) +
                                        ": the ports are on different switches"};
    RequirePort(target.region, id);
    return static_cast<uint8_t>(id.port);
}

Model SetMirror(Call& call)
{
    const PortTarget target(call);
    target.RequireCapability(OB_CAPS_MIRRORING, "mirroring");
    const bool off = call.Word("DESTINATION") == "off";
    const uint8_t destination = off ? OB_NO_MIRROR : MirrorDestination(call, target);
    if (destination == target.Port())
        throw Failure{kUsage, "bad DESTINATION '" + call.Word("DESTINATION") +
                                  "': allowed is any port but the source itself, or off"};
    Check(ORBLINK_SetPortMirror(target.Device(), target.Port(), destination), target.object,
          "ORBLINK_SetPortMirror");
    return Done(target, "mirror_to", off ? Model() : Model(destination));
}

Model ShowDelay(Call& call)
{
    return Listed("ports", Some(PortTarget(call), {"delay"}));
}

Model SetDelay(Call& call)
{
    const PortTarget target(call);
    const auto& caps = target.Record().caps.port[target.id.port];
    if (target.HasPhy() || caps.portIfaceType != OB_IFACE_RGMII)
        throw Failure{kUnsupported, target.object + ": not an RGMII port"};
    const bool on = call.Word("ON-OFF") == "on";
    if (on)
        Check(ORBLINK_EnableRgmiiDelay(target.Device(), target.Port()), target.object,
              "ORBLINK_EnableRgmiiDelay");
    else
        Check(ORBLINK_DisableRgmiiDelay(target.Device(), target.Port()), target.object,
              "ORBLINK_DisableRgmiiDelay");
    return Done(target, "delay", on);
}

Model ShowTestMode(Call& call)
{
    const PortTarget target(call);
    target.RequirePhyPort();
    // The value is the HAL's; room for more than the one byte that it usually is.
    uint32_t mode[16] = {};
    Check(ORBLINK_GetPortIEEETestMode(target.Device(), target.Port(), mode), target.object,
          "ORBLINK_GetPortIEEETestMode");
    Model port = Some(target, {});
    port["test_mode"] =
        target.Enabled() ? ValueModel("test_mode", mode[0], target.Record()) : Model();
    return Listed("ports", std::move(port));
}

Model SetTestMode(Call& call)
{
    const PortTarget target(call);
    target.RequirePhyPort();
    if (!target.Enabled())
        throw Failure{kUnsupported, DownText(target.Record(), target.id.device)};
    const uint32_t mode = *ParseValue("test_mode", call.Word("TEST-MODE"));
    RequireOffered("test_mode", mode, target.Record(), target.object);
    Check(ORBLINK_SetPortIEEETestMode(target.Device(), target.Port(), static_cast<uint8_t>(mode)),
          target.object, "ORBLINK_SetPortIEEETestMode");
    return Done(target, "test_mode", ValueModel("test_mode", mode, target.Record()));
}

Model ShowDvt(Call& call)
{
    return Listed("ports", Some(PortTarget(call), {"dvt"}));
}

Model SetDvt(Call& call)
{
    const PortTarget target(call);
    target.RequirePhyPort();
    if (call.Word("TEST") == "off") {
        Check(ORBLINK_DisablePhyPortDvt(target.Device(), target.Port()), target.object,
              "ORBLINK_DisablePhyPortDvt");
        return Done(target, "dvt", nullptr);
    }
    const uint32_t test = *ParseValue("dvt", call.Word("TEST"));
    Check(ORBLINK_EnablePhyPortDvt(target.Device(), target.Port(), static_cast<int>(test)),
          target.object, "ORBLINK_EnablePhyPortDvt");
    return Done(target, "dvt", ValueModel("dvt", test, target.Record()));
}

Model ShowCounters(Call& call)
{
    const PortTarget target(call);
    Model port = Some(target, {});
    port["counters"] = PortCounters(target.Record(), target.id);
    return Listed("ports", std::move(port));
}

Model ResetCounters(Call& call)
{
    const PortTarget target(call);
    Check(ORBLINK_ResetPortCounters(target.Device(), target.Port()), target.object,
          "ORBLINK_ResetPortCounters");
    return Done(target, "counters", 0);
}

constexpr Command kPortCommands[] = {
    {"port", "", "every port with its settings and its link", "ORBLINK_GetPortLink", ListPorts,
     PrintModel},
    {"port PORT", "", "one port with its settings and its link", "ORBLINK_GetPortLink", ShowPort,
     PrintModel},
    {"port PORT link", "", "the link of a port", "ORBLINK_GetPortLink", ShowLink, PrintModel},
    {"port PORT enabled", "", "whether a port is to be enabled", "ORBLINK_GetPortEnable",
     ShowEnabled, PrintModel},
    {"port PORT enable", "", "enable a port", "ORBLINK_EnablePort", Enable, PrintChanges},
    {"port PORT disable", "--force", "disable a port", "ORBLINK_DisablePort", Disable,
     PrintChanges},
    {"port PORT speed", "", "the configured speed and duplex", "ORBLINK_GetSwitchDevices",
     ShowSpeed, PrintModel},
    {"port PORT speed SPEED [DUPLEX]", "", "force speed and duplex; auto negotiates",
     "ORBLINK_SetPhyPortSpeedDuplex", SetSpeed, PrintChanges},
    {"port PORT duplex", "", "the configured speed and duplex", "ORBLINK_GetSwitchDevices",
     ShowSpeed, PrintModel},
    {"port PORT duplex DUPLEX", "", "force the duplex at the configured speed",
     "ORBLINK_SetPhyPortSpeedDuplex", SetDuplex, PrintChanges},
    {"port PORT eee", "", "Energy-Efficient Ethernet, configured and on the chip",
     "ORBLINK_GetEeePortState", ShowEee, PrintModel},
    {"port PORT eee ON-OFF", "", "switch Energy-Efficient Ethernet",
     "ORBLINK_EnablePhyPortEee ORBLINK_DisablePhyPortEee", SetEee, PrintChanges},
    {"port PORT mirror", "", "where the port is mirrored to", "ORBLINK_GetSwitchDevices",
     ShowMirror, PrintModel},
    {"port PORT mirror DESTINATION", "", "mirror the port to another one", "ORBLINK_SetPortMirror",
     SetMirror, PrintChanges},
    {"port PORT delay", "", "the RGMII delay", "ORBLINK_GetSwitchDevices", ShowDelay, PrintModel},
    {"port PORT delay ON-OFF", "", "switch the RGMII delay",
     "ORBLINK_EnableRgmiiDelay ORBLINK_DisableRgmiiDelay", SetDelay, PrintChanges},
    {"port PORT test-mode", "", "the IEEE 802.3 test mode of the PHY",
     "ORBLINK_GetPortIEEETestMode", ShowTestMode, PrintModel},
    {"port PORT test-mode TEST-MODE", "", "set the IEEE 802.3 test mode of the PHY",
     "ORBLINK_SetPortIEEETestMode", SetTestMode, PrintChanges},
    {"port PORT dvt", "", "whether a verification test is on", "ORBLINK_GetSwitchDevices", ShowDvt,
     PrintModel},
    {"port PORT dvt TEST", "", "start or end a verification test",
     "ORBLINK_EnablePhyPortDvt ORBLINK_DisablePhyPortDvt", SetDvt, PrintChanges},
    {"port PORT counters", "", "the counters", "ORBLINK_GetPortCounters", ShowCounters,
     PrintCounters},
    {"port PORT counters reset", "", "set the counters to 0", "ORBLINK_ResetPortCounters",
     ResetCounters, PrintChanges},
};

}  // namespace

std::span<const Command> PortCommands()
{
    return kPortCommands;
}

}  // namespace ctl
