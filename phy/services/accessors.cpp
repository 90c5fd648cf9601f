#include "common/log.h"
#include "phy/call/region.h"

using namespace orblink;
using namespace orblink::phy;

int EPHAL_SetHwState(uint8_t DevIdx, int Enabled)
{
    PhyDeviceRecord* const record = FindRecord(DevIdx);
    if (record == nullptr)
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    record->config.hwState = Enabled != 0 ? EP_HW_STATE_ENABLED : EP_HW_STATE_DISABLED;
    if (Enabled != 0)
        record->postResetMark = EP_POST_RESET_NONE;
    return RC_OK;
}

int EPHAL_GetHwState(uint8_t DevIdx, uint32_t* Enabled)
{
    if (Enabled == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyDeviceRecord* const record = FindRecord(DevIdx);
    if (record == nullptr)
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    *Enabled = record->config.hwState == EP_HW_STATE_ENABLED ? 1 : 0;
    return RC_OK;
}

int EPHAL_GetUlpModeEnabled(uint8_t DevIdx, uint32_t* Enabled)
{
    if (Enabled == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyDeviceRegion* const region = process.region;
    if (region == nullptr || DevIdx >= EP_MAX_PHYS)
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    *Enabled = region->vendor[DevIdx].ulpModeEnabled;
    return RC_OK;
}

void* EPHAL_GetHalPrivData(uint8_t DevIdx)
{
    PhyDeviceRegion* const region = process.region;
    if (region == nullptr || DevIdx >= PhyCount(*region))
        return nullptr;
    const uint8_t halIdx = ReadOnce(region->phy[DevIdx].halIdx);
    return halIdx < EP_MAX_PHYS ? region->halPrivData[halIdx] : nullptr;
}

uint32_t EPHAL_GetPortIfaceMode(uint8_t DevIdx)
{
    const PhyDeviceRecord* const record = FindRecord(DevIdx);
    if (record != nullptr)
        return record->board.portIfaceMode;
    EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    return 0;
}

uint32_t EPHAL_GetPortIfaceSpeed(uint8_t DevIdx)
{
    const PhyDeviceRecord* const record = FindRecord(DevIdx);
    if (record != nullptr)
        return record->board.portIfaceSpeed;
    EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    return 0;
}

int EPHAL_GetMdioAddrAndBusId(uint8_t DevIdx, uint8_t* BusId, uint8_t* Addr)
{
    if (DevIdx >= PhyCount())
        return EP_ERROR("failed");
    const PhyBoardEntry& board = FindRecord(DevIdx)->board;
    if (BusId != nullptr)
        *BusId = board.mdioBus;
    if (Addr != nullptr)
        *Addr = board.mdioAddr;
    return RC_OK;
}
