#include "tools/orblinkctl/commands/register_access.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

Model ReadRegisters(const Call& call, const RegisterAccess& access)
{
    const RegisterRange range = *ParseRange(call.Word("REGISTERS"));
    Model model;
    model["registers"] = Model::array();
    for (uint32_t reg = range.first; reg <= range.last; ++reg) {
        Model entry;
        entry["object"] = access.object;
        entry["register"] = reg;
        entry["value"] = access.read(static_cast<uint16_t>(reg));
        model["registers"].push_back(std::move(entry));
    }
    return model;
}

Model WriteRegisters(const Call& call, const RegisterAccess& access)
{
    const RegisterRange range = *ParseRange(call.Word("REGISTERS"));
    const MaskedValue wanted = *ParseMasked(call.Word("VALUE"));
    Model model;
    model["changes"] = Model::array();
    for (uint32_t number = range.first; number <= range.last; ++number) {
        const auto reg = static_cast<uint16_t>(number);
        uint16_t value = wanted.value;
        if (wanted.mask != 0xFFFF)
            value = static_cast<uint16_t>(value | (access.read(reg) & ~wanted.mask));
        access.write(reg, value);
        const Model one = Change(access.object, "register " + Hex(reg, 4), Hex(value, 4), true);
        model["changes"].push_back(one["changes"].front());
    }
    return model;
}

void PrintRegisters(const Model& model, std::string& out)
{
    for (const auto& entry : model["registers"]) {
        std::string line =
            Hex(entry["register"].get<uint32_t>(), 4) + ": " +
            (entry["value"].is_null() ? "-" : Hex(entry["value"].get<uint32_t>(), 4));
        if (entry.contains("name"))
            line += "  " + Text(entry["name"]);
        Line(out, {line});
        if (!entry.contains("bits"))
            continue;
        for (const auto& field : entry["bits"]) {
            std::string bits = Text(field["bits"]);
            bits.insert(0, 5 - std::min<size_t>(bits.size(), 5), ' ');
            Line(out, {"    ", bits, "  ", Text(field["name"]), ": ", Text(field["value"])});
        }
    }
}

}  // namespace ctl
