// What one process knows of the switch family; nothing of it is shared.
#pragma once

#include "switch/orblink_hal.h"

namespace orblink::sw {

// The struct's own name is hidden by the data symbol of the same name.
using HalTable = struct OBHAL_HalFuncs;

struct ProcessState {
    int semaphoreId = -1;                  // -1 until created or opened
    SwitchDeviceRegion* region = nullptr;  // null until mapped; then for the life of the process
    const HalTable* halTables[OB_MAX_SWITCHES] = {};
};

extern constinit ProcessState process;

// The stored number of switches; 0 when the region holds a number that cannot be.
uint8_t SwitchCount();

// Loads the HAL libraries that this process still lacks.
int _LoadHals();

}  // namespace orblink::sw
