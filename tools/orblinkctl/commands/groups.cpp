// The command table, put together from its themes.
#include "tools/orblinkctl/commands/tables.h"

namespace ctl {

std::span<const CommandGroup> CommandGroups()
{
    static const CommandGroup groups[] = {
        {"The board", BoardCommands()},
        {"Repair", RecoveryCommands()},
        {"Switches", SwitchCommands()},
        {"Ports", PortCommands()},
        {"VLANs and bridging", VlanCommands()},
        {"Switch-wide features", FeatureCommands()},
        {"Why nothing arrives", ExplainCommands()},
        {"Counters", CounterCommands()},
        {"MAC table", MacCommands()},
        {"PHYs", PhyCommands()},
        {"Registers", RegisterCommands()},
        {"Configuration", ConfigCommands()},
        {"Watching", WatchCommands()},
        {"Measured values", MetricsCommands()},
        {"The library's log", LogCommands()},
        {"Support", BundleCommands()},
        {"The program", ProgramCommands()},
    };
    return groups;
}

}  // namespace ctl
