// The initialisation of a family, in a process of its own that can be ended.
#pragma once

#include <optional>
#include <string>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/shared_state.h"

namespace ctl {

// What it found: {family, devices, mac_addresses}; nothing when no board data came within the
// session's waiting time. Then, and when a signal asks for the end, which is a failure, what was
// made so far is undone.
std::optional<Model> InitialiseFamily(Family family, bool defaults);
std::string NoAnswerText();

}  // namespace ctl
