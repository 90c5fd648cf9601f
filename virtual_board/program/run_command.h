// `orblink-vboard run`: a board, and a command with all its children on it.
#pragma once

#include <string>
#include <vector>

namespace vboard {

struct RunOptions {
    std::string boardFile;
    double timeScale = 1;
    bool lowLatency = false;         // see AwakeProcessors
    std::string ports;               // "tap" or "none"; empty: as the board file has it
    std::string isolation = "auto";  // or "namespaces", "names", "machine": see Isolation
    std::string socketPath;          // empty: one of the board's own
    std::vector<std::string> command;
};

// The exit status of the command (128 + n when signal n ended it, 126 or 127 when it could not be
// started), 2 for a board file with mistakes, 1 when the board could not be set up.
int RunCommand(const RunOptions& options);

}  // namespace vboard
