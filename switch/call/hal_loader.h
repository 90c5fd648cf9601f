#pragma once

#include "switch/call/device.h"

namespace orblink::sw {

// True when there is nothing to load, which is what nearly every call finds.
[[gnu::always_inline]] inline bool HalsAreLoaded(const SwitchDeviceRegion& region)
{
    const uint8_t count = SwitchCount(region);
    for (int i = 0; i < count; ++i) {
        const uint8_t halIdx = ReadOnce(region.device[i].halIdx);
        if (halIdx >= OB_MAX_SWITCHES || process.halTables[halIdx] == nullptr)
            return false;
    }
    return true;
}

// Loads the HAL libraries that this process still lacks.
[[gnu::cold]] int _LoadHals(const SwitchDeviceRegion& region);

}  // namespace orblink::sw
