// Counters of PHYs, as far as the layout of their HAL is known.
#pragma once

#include "tools/orblinkctl/facts/counters.h"

namespace ctl {

// Whether the PHY is driven by the HAL whose private formats this program knows.
bool IsIeee8023(const PhyDeviceRecord& record);

// By name, null for what the PHY does not count; of a HAL with a layout of its own {"raw": bytes}.
Model PhyCounters(const PhyDeviceRegion& region, unsigned device);

}  // namespace ctl
