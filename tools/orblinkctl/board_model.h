// The whole board as one model.
#pragma once

#include <string>

#include "tools/orblinkctl/model.h"

namespace ctl {

// switches, ports, mac_vlans and phys from the records alone; null for a family that is not
// initialised. Fails when neither is.
Model StoredBoard();

// The five addresses, or null where this process does not know them.
Model MacAddresses();

void PrintBoard(const Model& model, std::string& out);

}  // namespace ctl
