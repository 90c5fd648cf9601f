#include "tools/orblinkctl/commands/register_lists.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/refusals.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

Model Fact(const Model& board, const char* key)
{
    return board.is_null() ? Model() : board[key];
}

// What every such list says of a switch.
Model SwitchHead(const Model& stored)
{
    Model entry;
    for (const char* key : {"switch", "state"})
        entry[key] = stored[key];
    entry["hal"] = Fact(stored["board"], "hal");
    return entry;
}

template <typename Add>
Model SwitchList(Add add)
{
    const auto region = ReadSwitches();
    Model model;
    model["switches"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const Model stored = StoredSwitch(region.device[device], device);
        Model entry = SwitchHead(stored);
        add(entry, stored);
        model["switches"].push_back(std::move(entry));
    }
    return model;
}

template <typename Add>
Model PhyList(Add add)
{
    const auto region = ReadPhys();
    Model model;
    model["phys"] = Model::array();
    for (unsigned device = 0; device < region.NumOfPhys; ++device) {
        const Model stored = StoredPhy(region, device);
        Model entry;
        for (const char* key : {"phy", "label", "state"})
            entry[key] = stored[key];
        entry["mdio_bus"] = Fact(stored["board"], "mdio_bus");
        entry["mdio_address"] = Fact(stored["board"], "mdio_address");
        add(entry, static_cast<uint8_t>(device),
            region.phy[device].config.hwState == EP_HW_STATE_ENABLED);
        model["phys"].push_back(std::move(entry));
    }
    return model;
}

Model MdioValue(uint8_t device, uint16_t reg)
{
    uint16_t value = 0;
    Enter(Family::kPhy);
    return ETHPHY_ReadMdio(device, reg, &value) == 0 ? Model(value) : Model();
}

// Not every PHY has clause 45; one without it is no failure.
Model DevicesWord(uint8_t device, uint16_t reg)
{
    uint16_t value = 0;
    Enter(Family::kPhy);
    if (ETHPHY_ReadMmd(device, 1, reg, &value) == 0)
        return value;
    DropHeldLogLines();
    return nullptr;
}

Model MmdNumbers(const Model& low, const Model& high)
{
    if (low.is_null() || high.is_null())
        return nullptr;
    const uint32_t bits = low.get<uint32_t>() | high.get<uint32_t>() << 16;
    Model numbers = Model::array();
    // Bit 0 stands for the clause-22 registers.
    for (unsigned mmd = 1; mmd < 32; ++mmd)
        if ((bits >> mmd & 1) != 0)
            numbers.push_back(mmd);
    return numbers;
}

std::string HexCell(const Model& value)
{
    return value.is_null() ? "-" : Hex(value.get<unsigned>(), 4);
}

std::string NumbersCell(const Model& numbers)
{
    std::string text;
    for (const auto& number : numbers)
        text += (text.empty() ? "" : " ") + Text(number);
    return text.empty() ? "-" : text;
}

}  // namespace

Model PortRegisterTargets(Call&)
{
    return SwitchList([](Model& entry, const Model& stored) {
        const Model& ports = stored["ports"];
        entry["port_numbers"] = ports.is_null() ? Model() : Model::array();
        for (unsigned port = 0; !ports.is_null() && port < ports.get<unsigned>(); ++port)
            entry["port_numbers"].push_back(port);
    });
}

Model SmiTargets(Call&)
{
    return SwitchList([](Model& entry, const Model& stored) {
        entry["mdio_bus"] = Fact(stored["board"], "mdio_bus");
        entry["mdio_address"] = Fact(stored["board"], "mdio_address");
    });
}

Model MdioTargets(Call& call)
{
    return PhyList([&call](Model& entry, uint8_t device, bool enabled) {
        entry["register_2"] = enabled ? MdioValue(device, 2) : Model();
        entry["register_3"] = enabled ? MdioValue(device, 3) : Model();
        const bool read = !entry["register_2"].is_null() && !entry["register_3"].is_null();
        entry["error"] = enabled && !read
                             ? Model(RefusalOf(PhyObject(device), "ETHPHY_ReadMdio").text)
                             : Model();
        if (enabled && !read)
            call.exitCode = kFailed;
    });
}

void PrintMdioTargets(const Model& model, std::string& out)
{
    if (model["phys"].empty())
        return Line(out, {"no phys"});
    Table table(
        {"PHY", "LABEL", "STATE", "MDIO BUS", "MDIO ADDRESS", "REGISTER 2", "REGISTER 3", "ERROR"});
    for (const auto& p : model["phys"])
        table.Row({Text(p["phy"]), Text(p["label"]), Text(p["state"]), Text(p["mdio_bus"]),
                   Text(p["mdio_address"]), HexCell(p["register_2"]), HexCell(p["register_3"]),
                   Text(p["error"])});
    table.Print(out);
}

Model MmdTargets(Call&)
{
    return PhyList([](Model& entry, uint8_t device, bool enabled) {
        entry["register_1_5"] = enabled ? DevicesWord(device, 5) : Model();
        entry["register_1_6"] = enabled ? DevicesWord(device, 6) : Model();
        entry["mmds"] = MmdNumbers(entry["register_1_5"], entry["register_1_6"]);
    });
}

void PrintMmdTargets(const Model& model, std::string& out)
{
    if (model["phys"].empty())
        return Line(out, {"no phys"});
    Table table({"PHY", "LABEL", "STATE", "MDIO BUS", "MDIO ADDRESS", "REGISTER 1.5",
                 "REGISTER 1.6", "MMDS"});
    for (const auto& p : model["phys"])
        table.Row({Text(p["phy"]), Text(p["label"]), Text(p["state"]), Text(p["mdio_bus"]),
                   Text(p["mdio_address"]), HexCell(p["register_1_5"]), HexCell(p["register_1_6"]),
                   NumbersCell(p["mmds"])});
    table.Print(out);
}

}  // namespace ctl
