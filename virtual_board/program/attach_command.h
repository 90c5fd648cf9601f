// `orblink-vboard serve` and `attach`: a board of its own that several programs, users and services
// join and leave.
#pragma once

#include <string>
#include <vector>

namespace vboard {

struct ServeOptions {
    std::string boardFile;
    double timeScale = 1;
    bool lowLatency = false;  // see AwakeProcessors
    std::string socketPath;   // empty: one of the board's own
};

// 0 once a signal has ended it, 2 for a board file with mistakes, 1 when the board could not be set
// up.
int ServeCommand(const ServeOptions& options);

struct AttachOptions {
    std::string socketPath;
    std::vector<std::string> command;
};

// The exit status of the command as in `run`, 1 when there is no board to join.
int AttachCommand(const AttachOptions& options);

}  // namespace vboard
