// The parts of the command table, one for each theme.
#pragma once

#include "tools/orblinkctl/line/command.h"

namespace ctl {

std::span<const Command> BoardCommands();
std::span<const Command> SwitchCommands();
std::span<const Command> PortCommands();
std::span<const Command> VlanCommands();
std::span<const Command> FeatureCommands();
std::span<const Command> CounterCommands();
std::span<const Command> ExplainCommands();
std::span<const Command> MacCommands();
std::span<const Command> RegisterCommands();
std::span<const Command> PhyCommands();
std::span<const Command> ConfigCommands();
std::span<const Command> MetricsCommands();
std::span<const Command> WatchCommands();
std::span<const Command> LogCommands();
std::span<const Command> BundleCommands();
std::span<const Command> RecoveryCommands();
std::span<const Command> ProgramCommands();

}  // namespace ctl
