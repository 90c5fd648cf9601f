// The labels that the operator gave to ports and PHYs in a small TOML file:
//
//     [port]
//     lan1 = "0:1"
//     [phy]
//     wan = 0
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/orblinkctl/access/words.h"

namespace ctl {

// A file that the operator named must exist; the usual one need not.
void UseNamesFile(const std::string& path);

// By index or by label.
std::optional<PortId> FindPort(std::string_view word);
std::optional<unsigned> FindPhy(std::string_view word);

// The label, or an empty text.
std::string PortLabel(unsigned device, unsigned port);
std::string PhyLabel(unsigned device);

}  // namespace ctl
