// `orblink-vboard control`: a command to a running board, and its answer.
#pragma once

#include <string>

#include "virtual_board/board/control.h"

namespace vboard {

struct ControlOptions {
    std::string socketPath;  // empty: that of the board around
    bool json = false;
    const ControlVerb* verb = nullptr;
    Json command = Json::object();
};

// The exit code that the board gives, 1 when none answers, 2 when none is named.
int ControlCommand(const ControlOptions& options);

}  // namespace vboard
