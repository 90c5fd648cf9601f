#include "common/log.h"
#include "switch_hal_services/attached_record.h"
#include "switch_hal_services/orblink_hal_services.h"

using namespace orblink;

void* OBHAL_GetHalPrivData(uint8_t DevIdx)
{
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    if (record == nullptr || record->halIdx >= OB_MAX_SWITCHES)
        return nullptr;
    return sw::process.region->halPrivData[record->halIdx];
}

int OBHAL_GetInternalPortPidx(uint8_t DevIdx)
{
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    return record != nullptr ? static_cast<int>(record->board.internalPortPidx) : 0;
}

uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t DevIdx)
{
    OB_TRACE("");
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    return record != nullptr ? record->board.internalPortIfaceMode : 0;
}

uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t DevIdx)
{
    OB_TRACE("");
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    return record != nullptr ? record->board.internalPortIfaceSpeed : 0;
}

uint32_t OBHAL_GetMtuSize(uint8_t DevIdx)
{
    OB_TRACE("");
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    return record != nullptr ? record->config.mtuSize : 0;
}

uint32_t OBHAL_GetSwitchCount(void)
{
    OB_TRACE("");
    return sw::process.region != nullptr ? sw::SwitchCount() : 0;
}

int OBHAL_GetMdioParams(uint8_t DevIdx, uint8_t* Bus, uint8_t* Addr)
{
    OB_TRACE("");
    const SwitchDeviceRecord* record = AttachedRecord(DevIdx);
    if (record == nullptr)
        return RC_OK;
    if (Bus != nullptr)
        *Bus = record->board.mdioBus;
    if (Addr != nullptr)
        *Addr = record->board.mdioAddr;
    return RC_OK;
}
