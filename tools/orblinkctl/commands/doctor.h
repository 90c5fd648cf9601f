// Is all well, and if not, what mends it.
#pragma once

#include <string>

#include "tools/orblinkctl/line/command.h"

namespace ctl {

Model Examine(Call& call);
void PrintChecks(const Model& model, std::string& out);

}  // namespace ctl
