// The configuration that the records store, as a tree that can be saved, compared and applied.
#pragma once

#include <string>
#include <vector>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// The form of configuration files; it has not changed since the first one.
inline constexpr int kConfigSchema = 1;

// {"switch": {"0": {..., "port": {"1": {...}}, "mac_vlan": {"1 00:..": {...}}}}, "phy": {"0":
// {...}}} Only what an operation of the library can set, and only where the port can have it.
Model CurrentConfig();

// The same with the values that a bring-up with defaults writes.
Model DefaultConfig(const Model& current);

// Canonical TOML: sorted, commented, one setting on each line.
std::string ConfigText(const Model& config);

// A file as ConfigText writes it; fails on a key or a value that no configuration has.
Model ReadConfig(const std::string& path);

// One setting that differs. Null: not there.
struct ConfigDifference {
    std::vector<std::string> path;
    Model board;
    Model wanted;
};

// Settings that `wanted` names and whose values differ; mapped addresses also when the board has
// more of them on a switch that `wanted` names.
std::vector<ConfigDifference> Differences(const Model& board, const Model& wanted);

std::string PathText(const std::vector<std::string>& path);

}  // namespace ctl
