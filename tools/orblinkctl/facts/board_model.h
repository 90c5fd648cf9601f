// The whole board as one model.
#pragma once

#include <string>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// switches, ports, mac_vlans and phys from the records alone; null for a family that is not
// initialised. A family that cannot be read does not hide the other: it is null, and its failure
// is in "errors". Fails when neither family is initialised.
Model StoredBoard();

// The same with the links of ports and PHYs.
Model LiveBoard();

// The five addresses, or null where this process does not know them.
Model MacAddresses();
// What the initialising process told this one.
void RememberMacAddresses(Model addresses);

}  // namespace ctl
