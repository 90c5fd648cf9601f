// Counters of ports and PHYs, as far as the layout of their HAL is known.
#pragma once

#include "tools/orblinkctl/facts/library.h"
#include "tools/orblinkctl/facts/model.h"

namespace ctl {

// An object of counters by name; of a HAL with a layout of its own {"raw": bytes as hexadecimal}.
Model PortCounters(const SwitchDeviceRecord& record, PortId port);

// Whether the switch is one whose private formats this program knows.
bool IsVs08(const SwitchDeviceRecord& record);

}  // namespace ctl
