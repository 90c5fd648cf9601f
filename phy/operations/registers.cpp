#include "phy/call/frame.h"

using namespace orblink;
using namespace orblink::phy;

namespace {

constexpr uint16_t kNothingRead = 0xFFFF;

}  // namespace

int ETHPHY_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    if (Value == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call.Entered())
        *Value = kNothingRead;
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    return EPHAL_ReadMdio(DevIdx, Reg, Value) == 0 ? RC_OK : RC_ERROR;
}

int ETHPHY_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Value)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    return EPHAL_WriteMdio(DevIdx, Reg, Value) == 0 ? RC_OK : RC_ERROR;
}

int ETHPHY_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value)
{
    if (Value == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call.Entered())
        *Value = kNothingRead;
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    return EPHAL_ReadMmd(DevIdx, Mmd, MmdReg, Value) == 0 ? RC_OK : RC_ERROR;
}

int ETHPHY_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Value)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    return EPHAL_WriteMmd(DevIdx, Mmd, MmdReg, Value) == 0 ? RC_OK : RC_ERROR;
}

int ETHPHY_ReadChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t* Value)
{
    if (Value == nullptr)
        return EP_ERROR_AT("%s:%d NULL ptr");
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::ReadChipReg, Reg, Value) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}

int ETHPHY_WriteChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t Value)
{
    const PhyCall call{EP_CALLER, DevIdx};
    if (!call || !ValidateHwState(call.Record()))
        return RC_ERROR;
    if (CallSlot(DevIdx, &HalTable::WriteChipReg, Reg, Value) != RC_OK)
        return EP_ERROR_AT("%s:%d failed Phy=%d", DevIdx);
    return RC_OK;
}
