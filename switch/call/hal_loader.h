#pragma once

#include "switch/orblink_api.h"

namespace orblink::sw {

// Loads the HAL libraries that this process still lacks.
int _LoadHals(const SwitchDeviceRegion& region);

}  // namespace orblink::sw
