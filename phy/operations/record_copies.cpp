#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_GetProvisionedConfig(uint8_t DevIdx, void* Out)
{
    const PhyCall call{DevIdx};
    if (!call)
        return RC_ERROR;
    const PhyProvConfig& config = call.Record().config;
    if (memcpy_s(Out, sizeof(config), &config, sizeof(config)) != 0)
        return EP_ERROR_AT("%s:%d Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

int ETHPHY_GetBsdConfig(uint8_t DevIdx, void* Out)
{
    const PhyCall call{DevIdx};
    if (!call)
        return RC_ERROR;
    const PhyBoardEntry& board = call.Record().board;
    if (memcpy_s(Out, sizeof(board), &board, sizeof(board)) != 0)
        return EP_ERROR_AT("%s:%d Runtime-constraint violation error in function kova_memcpy_s");
    return RC_OK;
}

int ETHPHY_GetPhyData(uint8_t DevIdx, void** Out)
{
    if (Out == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{DevIdx};
    if (!call)
        return RC_ERROR;
    *Out = &call.Record();
    return RC_OK;
}

int ETHPHY_GetCaps(uint8_t DevIdx, uint32_t* Caps)
{
    if (Caps == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Record().capsValid == 0)
        return EP_ERROR("PHY capabilities are not valid, DevIdx=%d", DevIdx);
    *Caps = call.Record().caps;
    return RC_OK;
}
