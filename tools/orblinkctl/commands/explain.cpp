// Why there is no link, or no traffic between two ports.
#include <optional>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/causes.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

Model Explain(Call& call)
{
    const PortTarget from(call);
    const auto to = call.Has("OTHER-PORT") ? FindPort(call.Word("OTHER-PORT")) : std::nullopt;
    if (to)
        RequirePort(from.region, *to);
    if (to && to->device == from.id.device && to->port == from.id.port)
        throw Failure{kUsage, "a port and itself: allowed is another port"};
    Model causes = Model::array();
    bool stops = false;
    bool changes = false;
    for (const auto& cause : CausesOf(from.region, from.id, to)) {
        Model entry;
        entry["subject"] = cause.subject;
        entry["effect"] = EffectWord(cause.effect);
        entry["text"] = cause.text;
        entry["next"] = cause.next.empty() ? Model() : Model(cause.next);
        causes.push_back(std::move(entry));
        stops = stops || cause.effect == Effect::kStops;
        changes = changes || cause.effect == Effect::kChanges;
    }
    Model model;
    model["verdict"] = stops ? "stopped" : changes ? "open with restrictions" : "open";
    model["causes"] = std::move(causes);
    if (stops)
        call.exitCode = kFailed;
    return model;
}

void PrintCauses(const Model& model, std::string& out)
{
    for (const auto& cause : model["causes"]) {
        Paragraph(out,
                  {Text(cause["effect"]), ": ", Text(cause["subject"]), ": ", Text(cause["text"])});
        if (!cause["next"].is_null())
            Paragraph(out, {"    next: ", Text(cause["next"])});
    }
    Paragraph(out, {"verdict: ", Text(model["verdict"])});
}

constexpr Command kExplainCommands[] = {
    {"explain PORT [OTHER-PORT]", "",
     "why a port has no link, or what happens to frames from it to another port",
     "ORBLINK_GetSwitchDevices ORBLINK_SmiRead ORBLINK_ReadPortReg ORBLINK_GetPortCounters "
     "ORBLINK_ForEachMacEntry",
     Explain, PrintCauses},
};

}  // namespace

std::span<const Command> ExplainCommands()
{
    return kExplainCommands;
}

}  // namespace ctl
