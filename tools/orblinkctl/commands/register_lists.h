// What register commands can reach: the answers to "reg", "smi", "mdio" and "mmd" alone.
#pragma once

#include "tools/orblinkctl/line/command.h"

namespace ctl {

Model PortRegisterTargets(Call& call);
Model SmiTargets(Call& call);

// The identifier registers 2 and 3 of each PHY.
Model MdioTargets(Call& call);
void PrintMdioTargets(const Model& model, std::string& out);

// The words 1.5 and 1.6 of each PHY: which clause-45 partitions it has.
Model MmdTargets(Call& call);
void PrintMmdTargets(const Model& model, std::string& out);

}  // namespace ctl
