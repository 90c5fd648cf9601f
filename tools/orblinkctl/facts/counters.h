// Counters of ports and PHYs, as far as the layout of their HAL is known.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// An object of counters by name, null for one that nobody counts; of a HAL with a layout of its own
// {"raw": bytes as hexadecimal}.
Model PortCounters(const SwitchDeviceRecord& record, PortId port);

// Switches whose private formats this program knows: the VS08, and what Linux drives.
bool IsVs08(const SwitchDeviceRecord& record);
bool IsLinuxSwitch(const SwitchDeviceRecord& record);

}  // namespace ctl
