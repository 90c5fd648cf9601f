// A TOML file as a model.
#pragma once

#include <string>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// Fails with file:line:column and what the reader expected there.
Model ReadTomlFile(const std::string& path);

}  // namespace ctl
