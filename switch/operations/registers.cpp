#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

unsigned long AsNumber(const void* pointer)
{
    return reinterpret_cast<unsigned long>(pointer);
}

}  // namespace

int ORBLINK_ReadPortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, void* Value)
{
    OB_TRACE("Port=%d, Reg=%d", Port, Reg);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::ReadPortReg, Port, Reg, Value) != RC_OK)
        return OB_ERROR("ReadPortReg failed, Port=%d, Reg=%d, DevIdx=%d", Port, Reg, DevIdx);
    return RC_OK;
}

int ORBLINK_WritePortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, uint16_t Val)
{
    OB_TRACE("Port=%d, Reg=%d", Port, Reg);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::WritePortReg, Port, Reg, Val) != RC_OK)
        return OB_ERROR("WritePortReg failed, Port=%d, Reg=%d, Val=%d, DevIdx=%d", Port, Reg, Val,
                        DevIdx);
    return RC_OK;
}

int ORBLINK_SmiRead(uint8_t DevIdx, uint16_t RegAddr, void* Data)
{
    OB_TRACE("DevIdx=%d, RegAddr=0x%x", DevIdx, RegAddr);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SmiRead, RegAddr, Data) != RC_OK)
        return OB_ERROR("SmiRead failed, Reg=%d, DevIdx=%d", RegAddr, DevIdx);
    return RC_OK;
}

int ORBLINK_SmiWrite(uint8_t DevIdx, uint16_t RegAddr, uint16_t Data)
{
    OB_TRACE("DevIdx=%d, RegAddr=0x%x", DevIdx, RegAddr);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SmiWrite, RegAddr, Data) != RC_OK)
        return OB_ERROR("SmiWrite failed, Reg=%d, Data=%d, DevIdx=%d", RegAddr, Data, DevIdx);
    return RC_OK;
}

int ORBLINK_VendorSpecificIoctl(uint8_t DevIdx, int Cmd, void* pParam)
{
    OB_TRACE("DevIdx=%d, Cmd=%d pParam=0x%08lX", DevIdx, Cmd, AsNumber(pParam));
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::VendorSpecificIoctl, Cmd, pParam) != RC_OK)
        return OB_ERROR("ioctl failed, DevIdx=%d, Cmd=%d pParam=0x%08lX", DevIdx, Cmd,
                        AsNumber(pParam));
    return RC_OK;
}

int ORBLINK_PrintMachineState(uint8_t DevIdx)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::PrintMachineState) != RC_OK)
        return OB_ERROR("PrintMachineState failed, DevIdx=%d", DevIdx);
    return RC_OK;
}
