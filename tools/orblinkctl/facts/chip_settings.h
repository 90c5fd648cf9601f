// What a chip itself reports of its settings, beside what the record says.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// A list of {object, setting, record, chip} of an enabled switch. Of a chip whose registers this
// program does not know, only what the library's own operations read back.
Model ChipSettings(const SwitchDeviceRecord& record, unsigned device);

}  // namespace ctl
