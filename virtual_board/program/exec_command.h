// `orblink-vboard exec`: a command on a host behind a port of a switch.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace vboard {

// Adds `exec`. When it was given, `run` is set to what carries it out; that returns only when the
// command could not be started: 1, 2, 3 or 5 as for `control`, 126 or 127.
void AddExecCommand(CLI::App& program, std::function<int()>& run);

}  // namespace vboard
