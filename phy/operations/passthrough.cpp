// Operations that are one call on an enabled PHY: a service for its registers, a slot for the rest.
#include "phy/call/frame.h"

namespace orblink::phy {

namespace {

constexpr uint16_t kNothingRead = 0xFFFF;

template <typename Access>
int ReadRegister(LogCaller caller, uint8_t devIdx, uint16_t* value, Access access)
{
    if (value == nullptr)
        return EP_ERROR_AT_AS(caller, "NULL ptr");
    const PhyCall call{caller, devIdx};
    if (!call.Entered())
        *value = kNothingRead;
    return call.Enabled() && access() == 0 ? RC_OK : RC_ERROR;
}

template <typename Access>
int WriteRegister(LogCaller caller, uint8_t devIdx, Access access)
{
    const PhyCall call{caller, devIdx};
    return call.Enabled() && access() == 0 ? RC_OK : RC_ERROR;
}

template <typename Slot, typename... Args>
int PassToSlot(LogCaller caller, uint8_t devIdx, Slot slot, Args... args)
{
    const PhyCall call{caller, devIdx};
    if (!call.Enabled())
        return RC_ERROR;
    if (CallSlot(devIdx, slot, args...) != RC_OK)
        return EP_ERROR_AT_AS(caller, "failed Phy=%d", devIdx);
    return RC_OK;
}

}  // namespace

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    return ReadRegister(EP_CALLER, DevIdx, Value,
                        [=] { return EPHAL_ReadMdio(DevIdx, Reg, Value); });
}

int ETHPHY_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Value)
{
    return WriteRegister(EP_CALLER, DevIdx, [=] { return EPHAL_WriteMdio(DevIdx, Reg, Value); });
}

int ETHPHY_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value)
{
    return ReadRegister(EP_CALLER, DevIdx, Value,
                        [=] { return EPHAL_ReadMmd(DevIdx, Mmd, MmdReg, Value); });
}

int ETHPHY_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Value)
{
    return WriteRegister(EP_CALLER, DevIdx,
                         [=] { return EPHAL_WriteMmd(DevIdx, Mmd, MmdReg, Value); });
}

int ETHPHY_ReadChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    if (Value == nullptr)
        return EP_ERROR_AT("NULL ptr");
    return PassToSlot(EP_CALLER, DevIdx, &HalTable::ReadChipReg, Reg, Value);
}

int ETHPHY_WriteChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t Value)
{
    return PassToSlot(EP_CALLER, DevIdx, &HalTable::WriteChipReg, Reg, Value);
}

int ETHPHY_GetCounters(uint8_t DevIdx, void* Counters)
{
    if (Counters == nullptr)
        return EP_ERROR_AT("NULL ptr");
    return PassToSlot(EP_CALLER, DevIdx, &HalTable::GetCounters, Counters);
}

int ETHPHY_ResetCounters(uint8_t DevIdx)
{
    return PassToSlot(EP_CALLER, DevIdx, &HalTable::ResetCounters);
}

int ETHPHY_SetEeeState(uint8_t DevIdx, uint8_t State)
{
    return PassToSlot(EP_CALLER, DevIdx, &HalTable::SetEeeState, State);
}

int ETHPHY_Poll(uint8_t DevIdx)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::Poll) != RC_OK)
        return EP_ERROR_AT("failed Phy=%d", DevIdx);
    return RC_OK;
}
