#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_SetOrbLinkServiceStatus(uint8_t DevIdx, uint32_t Signal)
{
    OB_TRACE("ORBLINK_SetOrbLinkServiceStatus: Received event Signal = %i", Signal);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    call.Record().serviceStatus = Signal;
    return RC_OK;
}

uint32_t ORBLINK_IsOrbLinkServiceOn(uint8_t DevIdx)
{
    SwitchCall call{OB_CALLER, DevIdx};
    return call ? call.Record().serviceStatus : 0;
}
