#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_SetEeeState(uint8_t DevIdx, uint8_t State)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::SetEeeState, State) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}
