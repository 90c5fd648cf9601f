// Switches: state, bring-up, reset, capabilities.

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

Model ListSwitches(Call&)
{
    const auto region = ReadSwitches();
    Model model;
    model["switches"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        Model entry = StoredSwitch(region.device[device], device);
        const Model board = std::move(entry["board"]);
        entry.erase("board");
        entry["hal"] = board.is_null() ? Model() : board["hal"];
        model["switches"].push_back(std::move(entry));
    }
    return model;
}

Model ShowSwitch(Call& call)
{
    const SwitchTarget target(call);
    Model entry = StoredSwitch(target.Record(), target.device);
    entry["dvt_ports"] = target.Record().dvtPorts;
    entry["receive_reset_after_lane"] = target.Record().rxResetAfterSerdes != 0;
    Model model;
    model["switches"] = Model::array({std::move(entry)});
    return model;
}

void PrintSwitch(const Model& model, std::string& out)
{
    for (const auto& entry : model["switches"]) {
        for (const auto& [key, value] : entry.items()) {
            if (!value.is_object())
                Paragraph(out, {key, ": ", value.is_boolean() ? YesNo(value) : Text(value)});
            else
                for (const auto& [name, wired] : value.items())
                    Paragraph(out, {name, ": ", Text(wired)});
        }
    }
}

int DefaultsArgument(const Call& call)
{
    if (call.Has("--defaults") && call.Has("--restore"))
        throw Failure{kUsage, "--defaults and --restore exclude each other"};
    return call.Has("--defaults") ? 1 : 0;
}

void BringUp(const Call& call, const SwitchTarget& target)
{
    std::vector<uint8_t> vendor;
    if (call.Has("--vendor-params"))
        vendor = *ParseBytes(call.Word("--vendor-params"));
    Check(ORBLINK_ResetDisable(target.device, DefaultsArgument(call),
                               call.Has("--vendor-params") ? vendor.data() : nullptr,
                               static_cast<uint32_t>(vendor.size())),
          target.object, "ORBLINK_ResetDisable");
}

Model Up(Call& call)
{
    DefaultsArgument(call);
    const SwitchTarget target(call);
    BringUp(call, target);
    return Change(target.object, "state", "enabled", true);
}

// Without a reset pin the switch stays as it is; say what is.
Model Down(Call& call)
{
    const SwitchTarget target(call);
    Check(ORBLINK_ResetEnable(target.device), target.object, "ORBLINK_ResetEnable");
    const auto after = ReadSwitches();
    if (SwitchOf(after, target.device).config.state != OB_STATE_RESET)
        throw Failure{kUnsupported, target.object + " has no reset pin"};
    return Change(target.object, "state", "in reset", true);
}

Model Reset(Call& call)
{
    DefaultsArgument(call);
    Down(call);
    return Up(call);
}

Model ShowCaps(Call& call)
{
    const SwitchTarget target(call);
    SwitchCaps caps;
    if (target.Record().capsValid == 0)
        throw Failure{kInitState, "the capabilities of " + target.object +
                                      " are not known yet: orblinkctl up " +
                                      std::to_string(target.device)};
    Check(ORBLINK_GetSwitchCaps(target.device, &caps), target.object, "ORBLINK_GetSwitchCaps");
    Model model;
    model["capabilities"] = Model::array({Capabilities(caps, target.device)});
    return model;
}

void PrintCaps(const Model& model, std::string& out)
{
    for (const auto& caps : model["capabilities"])
        PrintModel(caps, out);
}

Model ShowConfig(Call& call)
{
    const SwitchTarget target(call);
    SwitchDeviceRegion region = target.region;
    auto& record = region.device[target.device];
    Check(ORBLINK_GetSwitchProvConfig(target.device, &record.config), target.object,
          "ORBLINK_GetSwitchProvConfig");
    Model model;
    Model entry = StoredSwitch(record, target.device);
    entry.erase("board");
    model["switches"] = Model::array({std::move(entry)});
    model["ports"] = Model::array();
    for (unsigned port = 0; port < PortCount(record); ++port)
        model["ports"].push_back(StoredPort(record, {target.device, port}));
    model["mac_vlans"] = MacVlanEntries(record.config.macToVlanTable, target.device);
    return model;
}

Model ShowService(Call& call)
{
    const SwitchTarget target(call);
    Model entry;
    entry["switch"] = target.device;
    entry["service"] = ORBLINK_IsOrbLinkServiceOn(target.device);
    Model model;
    model["switches"] = Model::array({std::move(entry)});
    return model;
}

Model SetService(Call& call)
{
    const SwitchTarget target(call);
    const auto status = call.As<uint32_t>("STATUS");
    Check(ORBLINK_SetOrbLinkServiceStatus(target.device, status), target.object,
          "ORBLINK_SetOrbLinkServiceStatus");
    return Change(target.object, "service", status, true);
}

Model ShowIsolation(Call& call)
{
    const SwitchTarget target(call);
    uint32_t isolation = 0;
    // The library keeps the flag with the vendor parameters, in a form of its own.
    if (target.region.vendor[target.device].vendorParamSize != 8)
        throw Failure{kUnsupported, target.object + ": no port isolation flag is stored for it"};
    Check(ORBLINK_GetIsolationModeEnabled(target.device, &isolation), target.object,
          "ORBLINK_GetIsolationModeEnabled");
    Model entry;
    entry["switch"] = target.device;
    entry["port_isolation"] = isolation != 0;
    Model model;
    model["switches"] = Model::array({std::move(entry)});
    return model;
}

Model ShowMachineState(Call& call)
{
    const SwitchTarget target(call);
    StdoutCapture capture;
    const int result = ORBLINK_PrintMachineState(target.device);
    const std::string text = capture.Text();
    Check(result, target.object, "ORBLINK_PrintMachineState");
    Model model;
    model["lines"] = Model::array();
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        model["lines"].push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return model;
}

void PrintLines(const Model& model, std::string& out)
{
    for (const auto& line : model["lines"])
        Line(out, {Text(line)});
}

constexpr Command kSwitchCommands[] = {
    {"up SWITCH", "--defaults --restore --vendor-params",
     "take a switch out of reset and apply its configuration", "ORBLINK_ResetDisable", Up,
     PrintChanges},
    {"down SWITCH", "", "put a switch into reset", "ORBLINK_ResetEnable", Down, PrintChanges},
    {"switch", "", "the switches and their settings", "ORBLINK_GetSwitchDevices", ListSwitches,
     PrintModel},
    {"switch SWITCH", "", "one switch: settings and wiring", "ORBLINK_GetSwitchDevices", ShowSwitch,
     PrintSwitch},
    {"switch SWITCH up", "--defaults --restore --vendor-params",
     "take a switch out of reset and apply its configuration", "ORBLINK_ResetDisable", Up,
     PrintChanges},
    {"switch SWITCH down", "", "put a switch into reset", "ORBLINK_ResetEnable", Down,
     PrintChanges},
    {"switch SWITCH reset", "--defaults --restore --vendor-params", "down, then up",
     "ORBLINK_ResetEnable ORBLINK_ResetDisable", Reset, PrintChanges},
    {"switch SWITCH caps", "", "what the chip can do", "ORBLINK_GetSwitchCaps", ShowCaps,
     PrintCaps},
    {"switch SWITCH config", "", "the provisioned configuration", "ORBLINK_GetSwitchProvConfig",
     ShowConfig, PrintModel},
    {"switch SWITCH service", "", "the service flag", "ORBLINK_IsOrbLinkServiceOn", ShowService,
     PrintModel},
    {"switch SWITCH service STATUS", "", "set the service flag", "ORBLINK_SetOrbLinkServiceStatus",
     SetService, PrintChanges},
    {"switch SWITCH isolation", "", "whether the board data ask for port isolation",
     "ORBLINK_GetIsolationModeEnabled", ShowIsolation, PrintModel},
    {"switch SWITCH machine-state", "", "the state machines as the HAL prints them",
     "ORBLINK_PrintMachineState", ShowMachineState, PrintLines},
};

}  // namespace

std::span<const Command> SwitchCommands()
{
    return kSwitchCommands;
}

}  // namespace ctl
