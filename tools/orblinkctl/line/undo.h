// The way back when one of several settings fails. What settings there are, the configuration
// knows; it defines these functions.
#pragma once

#include "tools/orblinkctl/access/model.h"

namespace ctl {

Model SettingsNow();
void ReturnTo(const Model& settings);

}  // namespace ctl
