// The socket through which the EPHAL_ services reach the network drivers.
#pragma once

#include <net/if.h>

#include "phy/call/region.h"

namespace orblink::phy {

// Opens the socket if this process has none; logs in the name of the service.
int OpenProcessSocket(LogCaller caller);

// A socket that a request failed on is not used again.
void CloseProcessSocket();

// Copies an interface name into a request's 16 bytes; logs in the name of the service.
int StoreInterfaceName(LogCaller caller, char (&to)[IFNAMSIZ], const char* name);

// "nsgmii0", "nsgmii1" or "UNKNOWN"; null with a line when the board data name no interface.
const char* InterfaceName(LogCaller caller, uint8_t devIdx, const PhyDeviceRecord& record);

}  // namespace orblink::phy
