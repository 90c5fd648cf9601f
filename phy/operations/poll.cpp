#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_Poll(uint8_t DevIdx)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::Poll) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}
