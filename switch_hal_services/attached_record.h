#pragma once

#include "switch/call/process_state.h"

namespace orblink {

// The record of a switch, or null for an index beyond the region or before this process has mapped
// it: the services trust nothing that a HAL hands them.
inline const SwitchDeviceRecord* AttachedRecord(uint8_t devIdx)
{
    const SwitchDeviceRegion* region = sw::process.region;
    return region != nullptr && devIdx < OB_MAX_SWITCHES ? &region->device[devIdx] : nullptr;
}

}  // namespace orblink
