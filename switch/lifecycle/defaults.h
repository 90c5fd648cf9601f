#pragma once

#include "switch/orblink_api.h"

namespace orblink::sw {

// The configuration of a switch that nobody has configured yet, marked as valid. What is no
// configuration (state, board data, service flag) is kept.
void WriteDefaultConfig(SwitchDeviceRecord& record);

}  // namespace orblink::sw
