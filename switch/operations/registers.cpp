#include "switch/operations/pass_through.h"

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
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "ReadPortReg failed, Port=%d, Reg=%d, DevIdx=%d", Port, Reg,
                               DevIdx);
        },
        &HalTable::ReadPortReg, Port, Reg, Value);
}

int ORBLINK_WritePortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, uint16_t Val)
{
    OB_TRACE("Port=%d, Reg=%d", Port, Reg);
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "WritePortReg failed, Port=%d, Reg=%d, Val=%d, DevIdx=%d",
                               Port, Reg, Val, DevIdx);
        },
        &HalTable::WritePortReg, Port, Reg, Val);
}

int ORBLINK_SmiRead(uint8_t DevIdx, uint16_t RegAddr, void* Data)
{
    OB_TRACE("DevIdx=%d, RegAddr=0x%x", DevIdx, RegAddr);
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SmiRead failed, Reg=%d, DevIdx=%d", RegAddr, DevIdx);
        },
        &HalTable::SmiRead, RegAddr, Data);
}

int ORBLINK_SmiWrite(uint8_t DevIdx, uint16_t RegAddr, uint16_t Data)
{
    OB_TRACE("DevIdx=%d, RegAddr=0x%x", DevIdx, RegAddr);
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SmiWrite failed, Reg=%d, Data=%d, DevIdx=%d", RegAddr, Data,
                               DevIdx);
        },
        &HalTable::SmiWrite, RegAddr, Data);
}

int ORBLINK_VendorSpecificIoctl(uint8_t DevIdx, int Cmd, void* pParam)
{
    OB_TRACE("DevIdx=%d, Cmd=%d pParam=0x%08lX", DevIdx, Cmd, AsNumber(pParam));
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "ioctl failed, DevIdx=%d, Cmd=%d pParam=0x%08lX", DevIdx,
                               Cmd, AsNumber(pParam));
        },
        &HalTable::VendorSpecificIoctl, Cmd, pParam);
}

int ORBLINK_PrintMachineState(uint8_t DevIdx)
{
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "PrintMachineState failed, DevIdx=%d", DevIdx);
        },
        &HalTable::PrintMachineState);
}
