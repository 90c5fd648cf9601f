// The standard PHY registers of IEEE 802.3, bit by bit.
#pragma once

#include <optional>

#include "tools/orblinkctl/facts/model.h"

namespace ctl {

// Gives each standard PHY register of the model its "bits", by name.
void DecodeRegisters(Model& model, std::optional<unsigned> mmd);

}  // namespace ctl
