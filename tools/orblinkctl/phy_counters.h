// Counters of PHYs, as far as the layout of their HAL is known.
#pragma once

#include "tools/orblinkctl/counters.h"

namespace ctl {

Model PhyCounters(const PhyDeviceRegion& region, unsigned device);

}  // namespace ctl
