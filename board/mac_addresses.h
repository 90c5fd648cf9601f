// The board's MAC addresses, kept in the process that received the switch board data.
#pragma once

#include "board/bsd_wire.h"

namespace orblink {

void StoreMacAddresses(const uint8_t (&received)[kMacCount][kMacSize]);

}  // namespace orblink
