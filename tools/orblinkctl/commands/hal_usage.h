// The usage of commands whose values each HAL gives its own meaning, and that read nothing back.
#pragma once

#include "tools/orblinkctl/line/command.h"

namespace ctl {

Model QosUsage(Call& call);
Model IoctlUsage(Call& call);
void PrintUsage(const Model& model, std::string& out);

}  // namespace ctl
