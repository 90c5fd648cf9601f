// Bringing the board to a configuration by the library's operations.
#pragma once

#include <string>
#include <vector>

#include "tools/orblinkctl/config/config_model.h"

namespace ctl {

// One operation that a difference asks for.
struct ConfigStep {
    // Small numbers come first. What disturbs the port to the SoC comes last.
    int order;
    // As an operator would type it.
    std::string command;
};

// Fails when a difference is about an object that the board does not have, or about a setting that
// the object cannot have.
std::vector<ConfigStep> StepsFor(const Model& board,
                                 const std::vector<ConfigDifference>& differences);

// Runs the steps through the same commands that an operator would type.
void RunSteps(const std::vector<ConfigStep>& steps);

}  // namespace ctl
