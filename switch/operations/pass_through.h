// The pass-through pattern: the frame, an enabled switch, one slot.
#pragma once

#include "switch/call/frame.h"

namespace orblink::sw {

// For operations that reach the chip or fail.
inline int RequireEnabled(LogCaller caller, const SwitchDevice& device)
{
    if (!device.IsEnabled())
        return OB_ERROR_AS(caller, "Switch is not in enabled state, DevIdx=%d", device.Idx());
    return RC_OK;
}

// Hands the arguments to the slot as they are; `failed` logs the operation's failure.
template <typename Failed, typename... Params>
int PassThrough(LogCaller caller, uint8_t devIdx, Failed failed,
                int (*HalTable::*slot)(int, Params...), std::type_identity_t<Params>... args)
{
    SwitchCall call{caller, devIdx};
    if (!call || RequireEnabled(caller, call.Device()) != RC_OK)
        return RC_ERROR;
    return call.Device().Hal(slot, args...) == RC_OK ? RC_OK : failed();
}

}  // namespace orblink::sw
