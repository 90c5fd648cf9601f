#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_GetLink(uint8_t DevIdx, uint32_t* Link, uint32_t* Speed, uint32_t* Duplex)
{
    if (Link == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Record().config.hwState == EP_HW_STATE_DISABLED) {
        *Link = 0;
        return RC_OK;
    }
    if (CallSlot(DevIdx, &HalTable::GetLink, Link, Speed, Duplex) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}

int ETHPHY_SetAdminState(uint8_t DevIdx, int Enable)
{
    EP_TRACE_AT("%s:%d DevIndex=%d Enable=%d", DevIdx, Enable);
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    PhyProvConfig& config = call.Record().config;
    config.adminState = static_cast<uint32_t>(Enable);
    if (config.hwState == EP_HW_STATE_DISABLED)
        return RC_OK;  // ETHPHY_ResetDisable applies it
    if (CallSlot(DevIdx, &HalTable::SetAdminState, Enable) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    config.hwState = EP_HW_STATE_ENABLED;
    return RC_OK;
}
