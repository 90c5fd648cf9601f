#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_GetCounters(uint8_t DevIdx, void* Counters)
{
    if (Counters == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::GetCounters, Counters) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}

int ETHPHY_ResetCounters(uint8_t DevIdx)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::ResetCounters) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}
