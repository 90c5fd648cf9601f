// What the services read of a switch. The switch family, which runs the slots, supplies it; the
// services trust nothing that a HAL hands them, so any index may come in.
#pragma once

#include "board/board_services.h"

namespace orblink {

// In shared memory; null for an index beyond the region, or before this process has mapped it.
const SwitchBoardEntry* AttachedBoardEntry(uint8_t devIdx);

// Null as before, and while the switch has no HAL index.
void* AttachedPrivData(uint8_t devIdx);

// 0 where the others give null.
uint16_t AttachedMtuSize(uint8_t devIdx);
uint8_t AttachedSwitchCount();

}  // namespace orblink
