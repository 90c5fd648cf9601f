#pragma once

#include "common/log.h"
#include "switch/call/device.h"

namespace orblink::sw {

// Resets the SoC's SerDes lane of the internal port, and the chip's receive path after it where the
// board asks for it. Logs in the name of the operation.
int ResetInternalLane(LogCaller caller, const SwitchDevice& device);

}  // namespace orblink::sw
