#include "common/log.h"
#include "switch_hal_services/attached_switch.h"
#include "switch_hal_services/orblink_hal_services.h"

using namespace orblink;

void* OBHAL_GetHalPrivData(uint8_t DevIdx)
{
    return AttachedPrivData(DevIdx);
}

int OBHAL_GetInternalPortPidx(uint8_t DevIdx)
{
    const SwitchBoardEntry* const board = AttachedBoardEntry(DevIdx);
    return board != nullptr ? static_cast<int>(board->internalPortPidx) : 0;
}

uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t DevIdx)
{
    OB_TRACE("");
    const SwitchBoardEntry* const board = AttachedBoardEntry(DevIdx);
    return board != nullptr ? board->internalPortIfaceMode : 0;
}

uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t DevIdx)
{
    OB_TRACE("");
    const SwitchBoardEntry* const board = AttachedBoardEntry(DevIdx);
    return board != nullptr ? board->internalPortIfaceSpeed : 0;
}

uint32_t OBHAL_GetMtuSize(uint8_t DevIdx)
{
    OB_TRACE("");
    return AttachedMtuSize(DevIdx);
}

uint32_t OBHAL_GetSwitchCount(void)
{
    OB_TRACE("");
    return AttachedSwitchCount();
}

int OBHAL_GetMdioParams(uint8_t DevIdx, uint8_t* Bus, uint8_t* Addr)
{
    OB_TRACE("");
    const SwitchBoardEntry* const board = AttachedBoardEntry(DevIdx);
    if (board == nullptr)
        return RC_OK;
    if (Bus != nullptr)
        *Bus = board->mdioBus;
    if (Addr != nullptr)
        *Addr = board->mdioAddr;
    return RC_OK;
}
