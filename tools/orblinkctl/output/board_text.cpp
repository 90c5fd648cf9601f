#include "tools/orblinkctl/output/board_text.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

std::string OrNone(const Model& value)
{
    return value.is_null() ? "none" : Text(value);
}

void PrintWiring(const Model& board, std::string& out)
{
    Paragraph(
        out, {"  HAL ", Text(board["hal"]), ", lane ", Text(board["lane"]), ", ",
              Text(board["interface"]), " ", Text(board["interface_speed"]), ", MDIO bus ",
              OrNone(board["mdio_bus"]), " address ", OrNone(board["mdio_address"]), ", reset pin ",
              OrNone(board["reset_pin"]), ", enable pin ", OrNone(board["enable_pin"])});
}

void PrintSwitch(const Model& entry, std::string& out)
{
    Paragraph(out, {"switch ", Text(entry["switch"]), ": ", Text(entry["state"]), ", ",
                    entry["ports"].is_null() ? "unknown" : Text(entry["ports"]), " ports"});
    if (!entry["board"].is_null()) {
        PrintWiring(entry["board"], out);
        Paragraph(out, {"  internal port ", OrNone(entry["board"]["internal_port"]),
                        ", pre-reset argument ", Text(entry["board"]["pre_reset_argument"])});
    }
    Paragraph(out, {"  bridge mode ", Text(entry["bridge_mode"]), " (TPID ",
                    Hex(entry["bridge_tpid"].get<unsigned>(), 4), "), IGMP ", OnOff(entry["igmp"]),
                    ", MTU ", Text(entry["mtu"]), ", LED mode ", Text(entry["led"]), ", aging ",
                    Text(entry["aging"]), ", service ", Text(entry["service"])});
    Paragraph(out, {"  HAL index ", OrNone(entry["hal_index"]), ", configuration ",
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

std::string CapabilityText(const Model& phy)
{
    if (phy["capabilities"].is_null())
        return "unknown";
    if (phy["capability_names"].is_null())
        return Hex(phy["capabilities"].get<uint32_t>(), 8);
    std::string text;
    for (const auto& name : phy["capability_names"])
        text += (text.empty() ? "" : " ") + Text(name);
    return text;
}

void PrintPhy(const Model& entry, std::string& out)
{
    Paragraph(out, {"PHY ", Text(entry["phy"]), entry["label"].is_null() ? "" : " ",
                    entry["label"].is_null() ? "" : Text(entry["label"]), ": ",
                    Text(entry["state"]), ", admin ", OnOff(entry["admin"]), ", capabilities ",
                    CapabilityText(entry), ", ultra low power ", OnOff(entry["ultra_low_power"])});
    if (!entry["board"].is_null())
        PrintWiring(entry["board"], out);
    Paragraph(out, {"  HAL index ", OrNone(entry["hal_index"])});
}

}  // namespace

void PrintBoard(const Model& model, std::string& out)
{
    const char* missing = model["errors"].empty() ? "not initialised" : "not available";
    if (model["switches"].is_null()) {
        Paragraph(out, {"switch family: ", missing});
    } else {
        if (model["switches"].empty())
            Paragraph(out, {"no switches"});
        for (const auto& entry : model["switches"])
            PrintSwitch(entry, out);
        if (!model["ports"].empty())
            PrintPorts(model["ports"], out);
        if (!model["mac_vlans"].empty())
            PrintMacVlans(model["mac_vlans"], out);
    }
    if (model["phys"].is_null())
        Paragraph(out, {"PHY family: ", missing});
    else if (model["phys"].empty())
        Paragraph(out, {"no PHYs"});
    for (const auto& entry : model["phys"])
        PrintPhy(entry, out);
    for (const auto& error : model["errors"])
        Paragraph(out, {"error: ", Text(error)});
}

}  // namespace ctl
