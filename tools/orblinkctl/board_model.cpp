#include "tools/orblinkctl/board_model.h"

#include "tools/orblinkctl/failure.h"
#include "tools/orblinkctl/library.h"
#include "tools/orblinkctl/log_lines.h"
#include "tools/orblinkctl/phy_model.h"
#include "tools/orblinkctl/switch_model.h"
#include "tools/orblinkctl/text.h"

namespace ctl {

namespace {

void AddSwitches(Model& model, bool live)
{
    const auto region = ReadSwitches();
    model["switches"] = Model::array();
    model["mac_vlans"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        model["switches"].push_back(StoredSwitch(record, device));
        for (auto& entry : MacVlanEntries(record.config.macToVlanTable, device))
            model["mac_vlans"].push_back(std::move(entry));
    }
    model["ports"] = live ? LivePorts(region) : StoredPorts(region);
}

void AddPhys(Model& model, bool live)
{
    const auto region = ReadPhys();
    model["phys"] = live ? LivePhys(region) : StoredPhys(region);
}

template <typename Read>
void Attempt(Model& model, Read read)
{
    try {
        read();
    } catch (const Failure& failure) {
        if (failure.code != kFailed)
            throw;
        model["errors"].push_back(failure.text);
    }
}

std::string OrNone(const Model& value)
{
    return value.is_null() ? "none" : Text(value);
}

void PrintWiring(const Model& board, std::string& out)
{
    Line(out,
         {"  HAL ", Text(board["hal"]), ", lane ", Text(board["lane"]), ", ",
          Text(board["interface"]), " ", Text(board["interface_speed"]), ", MDIO bus ",
          OrNone(board["mdio_bus"]), " address ", OrNone(board["mdio_address"]), ", reset pin ",
          OrNone(board["reset_pin"]), ", enable pin ", OrNone(board["enable_pin"])});
}

void PrintSwitch(const Model& entry, std::string& out)
{
    Line(out, {"switch ", Text(entry["switch"]), ": ", Text(entry["state"]), ", ",
               entry["ports"].is_null() ? "unknown" : Text(entry["ports"]), " ports"});
    if (!entry["board"].is_null()) {
        PrintWiring(entry["board"], out);
        Line(out, {"  internal port ", OrNone(entry["board"]["internal_port"]),
                   ", pre-reset argument ", Text(entry["board"]["pre_reset_argument"])});
    }
    Line(out, {"  bridge mode ", Text(entry["bridge_mode"]), " (TPID ",
               Hex(entry["bridge_tpid"].get<unsigned>(), 4), "), IGMP ", OnOff(entry["igmp"]),
               ", MTU ", Text(entry["mtu"]), ", LED mode ", Text(entry["led"]), ", aging ",
               Text(entry["aging"]), ", service ", Text(entry["service"])});
    Line(out, {"  HAL index ", OrNone(entry["hal_index"]), ", configuration ",
               entry["config_valid"].get<bool>() ? "valid" : "not valid"});
}

void PrintPorts(const Model& ports, std::string& out)
{
    Table table({"PORT", "LABEL", "ROLE", "ENABLED", "SPEED", "DUPLEX", "VLAN", "PCP", "TAGGING",
                 "GROUP", "LOCKED", "EEE", "MIRROR", "DELAY", "DVT"});
    for (const auto& p : ports)
        table.Row({PortWord(p["switch"].get<unsigned>(), p["port"].get<unsigned>()),
                   Text(p["label"]), Text(p["role"]), YesNo(p["enabled"]), Text(p["speed"]),
                   Text(p["duplex"]), Text(p["vlan"]), Text(p["pcp"]), Text(p["tagging"]),
                   Text(p["group"]), YesNo(p["group_locked"]), OnOff(p["eee"]),
                   Text(p["mirror_to"]), OnOff(p["delay"]), OnOff(p["dvt"])});
    table.Print(out);
}

void PrintMacVlans(const Model& entries, std::string& out)
{
    Table table({"PORT", "MAC", "MASK", "VLAN"});
    for (const auto& e : entries)
        table.Row({PortWord(e["switch"].get<unsigned>(), e["port"].get<unsigned>()), Text(e["mac"]),
                   Hex(e["mask"].get<unsigned>(), 3), Text(e["vlan"])});
    table.Print(out);
}

void PrintPhy(const Model& entry, std::string& out)
{
    Line(out, {"PHY ", Text(entry["phy"]), entry["label"].is_null() ? "" : " ",
               entry["label"].is_null() ? "" : Text(entry["label"]), ": ", Text(entry["state"]),
               ", admin ", OnOff(entry["admin"]), ", capabilities ",
               entry["capabilities"].is_null() ? "unknown" : Text(entry["capabilities"]),
               ", ultra low power ", OnOff(entry["ultra_low_power"])});
    if (!entry["board"].is_null())
        PrintWiring(entry["board"], out);
    Line(out, {"  HAL index ", OrNone(entry["hal_index"])});
}

Model ReadBoard(bool live)
{
    const bool switches = IsInitialised(Family::kSwitch);
    const bool phys = IsInitialised(Family::kPhy);
    if (!switches && !phys)
        throw Failure{kInitState, "the board is not initialised: run 'orblinkctl init' first"};
    Model model;
    for (const char* list : {"switches", "ports", "mac_vlans", "phys"})
        model[list] = nullptr;
    model["errors"] = Model::array();
    if (switches)
        Attempt(model, [&] { AddSwitches(model, live); });
    if (phys)
        Attempt(model, [&] { AddPhys(model, live); });
    return model;
}

}  // namespace

Model StoredBoard()
{
    return ReadBoard(false);
}

Model LiveBoard()
{
    return ReadBoard(true);
}

Model MacAddresses()
{
    uint8_t macs[5][6];
    const bool known = ORBLINK_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]) == 0;
    if (!known) {
        DropHeldLogLines();
        return nullptr;
    }
    Model list = Model::array();
    for (const auto& mac : macs)
        list.push_back(MacWord(mac));
    return list;
}

void PrintBoard(const Model& model, std::string& out)
{
    const char* missing = model["errors"].empty() ? "not initialised" : "not available";
    if (model["switches"].is_null()) {
        Line(out, {"switch family: ", missing});
    } else {
        if (model["switches"].empty())
            Line(out, {"no switches"});
        for (const auto& entry : model["switches"])
            PrintSwitch(entry, out);
        if (!model["ports"].empty())
            PrintPorts(model["ports"], out);
        if (!model["mac_vlans"].empty())
            PrintMacVlans(model["mac_vlans"], out);
    }
    if (model["phys"].is_null())
        Line(out, {"PHY family: ", missing});
    else if (model["phys"].empty())
        Line(out, {"no PHYs"});
    for (const auto& entry : model["phys"])
        PrintPhy(entry, out);
    for (const auto& error : model["errors"])
        Line(out, {"error: ", Text(error)});
}

}  // namespace ctl
