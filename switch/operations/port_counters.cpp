#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_GetPortCounters(uint8_t DevIdx, uint8_t PortIdx, void* Counters)
{
    OB_TRACE("PortIdx=%d", PortIdx);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::GetPortCounters, PortIdx, Counters) != RC_OK)
        return OB_ERROR("GetPortCounters failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    return RC_OK;
}

int ORBLINK_ResetPortCounters(uint8_t DevIdx, uint8_t PortIdx)
{
    OB_TRACE("PortIdx=%d", PortIdx);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::ResetPortCounters, PortIdx) != RC_OK)
        return OB_ERROR("ResetPortCounters failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    return RC_OK;
}
