#pragma once

#include "switch/call/device.h"

namespace orblink::sw {

// True when there is nothing to load, which is what nearly every call finds.
[[gnu::always_inline]] inline bool HalsAreLoaded(const SwitchDeviceRegion& region)
{
    const uint8_t count = SwitchCount(region);
    static_assert(OB_MAX_SWITCHES == 2);
    return (count < 1 || FindTable(region.device[0]) != nullptr) &&
           (count < 2 || FindTable(region.device[1]) != nullptr);
}

// Loads the HAL libraries that this process still lacks.
[[gnu::cold]] int _LoadHals(const SwitchDeviceRegion& region);

}  // namespace orblink::sw
