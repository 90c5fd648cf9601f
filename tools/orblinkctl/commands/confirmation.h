// Carries out the steps of a configuration, for good or until somebody confirms them.
#pragma once

#include <vector>

#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/config/config_apply.h"
#include "tools/orblinkctl/config/guard.h"

namespace ctl {

// Brings the board back as far as possible after a failure; the failure itself is what counts.
void RunOrTakeBack(const std::vector<ConfigStep>& steps, const Model& before);

// Shows the change, makes it and asks; false when it was taken back.
bool KeptInTime(const PendingChange& change, const Model& before,
                const std::vector<ConfigStep>& steps);

}  // namespace ctl
