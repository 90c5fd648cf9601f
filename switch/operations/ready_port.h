// What the operations that only read or clear a port have in common.
#pragma once

#include "switch/operations/pass_through.h"

namespace orblink::sw {

// A call on a port of an enabled switch, or false after the reason was logged.
inline bool IsReady(LogCaller caller, const SwitchCall& call, uint8_t port)
{
    if (!call)
        return false;
    if (port >= call.Device().NumOfPorts()) {
        OB_ERROR_AS(caller, "Invalid PortIdx=%d, DevIdx=%d", port, call.Device().Idx());
        return false;
    }
    return RequireEnabled(caller, call.Device()) == RC_OK;
}

}  // namespace orblink::sw
