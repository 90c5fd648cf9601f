// Why a port has no link, or why frames do not get from one port to another: every reason, in the
// order in which a frame meets it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orblinkctl/access/library.h"

namespace ctl {

enum class Effect {
    kFine,
    // No frame passes.
    kStops,
    // Some frames do not pass, or pass changed or elsewhere.
    kChanges,
};

struct Cause {
    std::string subject;
    Effect effect;
    std::string text;
    // The command that changes it; empty where there is nothing to change.
    std::string next;
};

std::vector<Cause> CausesOf(const SwitchDeviceRegion& region, PortId from,
                            std::optional<PortId> to);

const char* EffectWord(Effect effect);

}  // namespace ctl
