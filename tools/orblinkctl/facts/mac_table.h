// The MAC tables of the switches.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// All entries of one switch.
Model MacEntries(const SwitchDeviceRecord& record, unsigned device);

Model MacEntryModel(const SwitchDeviceRecord& record, unsigned device, const MacEntry& entry);

}  // namespace ctl
