// The socket through which the EPHAL_ services reach the network drivers, one for the process.
#pragma once

#include "phy/ethphy_hal.h"

namespace orblink::phy {

// Opens the socket if this process has none; false, with errno, when there is none to be had.
bool OpenProcessSocket();

// A socket that a request failed on is not used again.
void CloseProcessSocket();

// "nsgmii0", "nsgmii1" or "UNKNOWN" by the low byte of the lane; null for a lane that has none.
const char* InterfaceName(uint8_t lane);

}  // namespace orblink::phy
