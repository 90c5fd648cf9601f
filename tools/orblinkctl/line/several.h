// Several commands of one line: all are checked before the first one runs, and when one fails those
// before it are undone, the last one first.
#pragma once

#include "tools/orblinkctl/line/command.h"

namespace ctl {

// Runs them and prints one answer.
ExitCode RunSeveral(std::vector<Call>& calls);

}  // namespace ctl
