// The command line of `orblink-vboard control`.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

namespace vboard {

// Adds `control` with its verbs. When one of them was given, `run` is set to what carries it out
// and returns the exit code.
void AddControlCommand(CLI::App& program, std::function<int()>& run);

}  // namespace vboard
