// `orblink-vboard exec`: a command on a host behind a port of a switch.
#pragma once

#include <string>
#include <vector>

namespace vboard {

struct ExecOptions {
    std::string socketPath;  // empty: that of the board around
    std::string host;
    std::vector<std::string> command;
};

// Returns only when the command could not be started: 1, 2, 3 or 5 as for `control`, 126 or 127.
int ExecCommand(const ExecOptions& options);

}  // namespace vboard
