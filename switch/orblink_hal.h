/*
 * What the author of a switch HAL library includes. The library exports one data symbol,
 * OBHAL_HalFuncs, of this type; liborblink loads it with dlopen and calls the slots.
 *
 * Each slot returns 0 for success and anything else for failure; the caller logs and returns -1.
 * Slots run with the switch semaphore held: they must not call the ORBLINK_ functions, longjmp or
 * throw, which ends the program; what they may call stands in
 * switch_hal_services/orblink_hal_services.h. Init runs once per boot, in one process only; state
 * that other processes need belongs into the private data it is given.
 *
 * DevIdx is the switch's index, port indices are the library's port numbers 0 to 7; every index and
 * value is passed as an int-sized argument. Pointers are the caller's and must not be kept.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_HAL_H
#define ORBLINK_SWITCH_ORBLINK_HAL_H

#include "switch/orblink_api.h"
#include "switch_hal_services/orblink_hal_services.h"

#ifdef __cplusplus
extern "C" {
#endif

/* VendorSpecificIoctl commands that the library itself sends. */
#define OBHAL_IOCTL_RX_RESET 3  /* receive-path reset after a lane reset; no parameter */
#define OBHAL_IOCTL_PRE_RESET 8 /* before the reset pulse; struct ObhalPreReset */

/* Parameter of OBHAL_IOCTL_PRE_RESET. */
struct ObhalPreReset {
    uint8_t serdesId;
    uint8_t preResetArg;
};

/* In slot order: 42 pointers. The last four may be null, the others must not be. */
struct OBHAL_HalFuncs {
    /* Private data: OB_HAL_PRIV_DATA_SIZE bytes, unaligned. */
    int (*Init)(void* PrivData);
    /* The chip has just left reset. Params may be null. */
    int (*ResetSwitch)(int DevIdx, const void* Params, uint32_t Size);
    int (*GetSwitchCaps)(int DevIdx, struct SwitchCaps* Caps);
    /* Calls Callback once per entry of the MAC table, the entry's context word holding the low 32
     * bits of Context; goes on while the callback returns non-zero. */
    int (*ForEachMacEntry)(int DevIdx, MacEntryCallback Callback, void* Context);
    int (*EnableProviderBridgedMode)(int DevIdx, int STagTpid);
    int (*DisableProviderBridgedMode)(int DevIdx);
    int (*SetLanPortVlan)(int DevIdx, int LanPortIdx, int Vid);
    int (*SetLanPortEgressTagging)(int DevIdx, int LanPortIdx, uint32_t EnableEgressTagging);
    int (*SetLanPortGroupId)(int DevIdx, int LanPortIdx, uint32_t GroupId);
    int (*SetLanPortPcp)(int DevIdx, int LanPortIdx, int Pcp);
    int (*GetPortCounters)(int DevIdx, int PortIdx, void* Counters);
    int (*ResetPortCounters)(int DevIdx, int PortIdx);
    /* Each pointer may be null. Speed: enum OB_Speed. */
    int (*GetPortLink)(int DevIdx, int PortIdx, uint32_t* Link, uint32_t* Speed,
                       uint32_t* FullDuplex);
    int (*SetPhyPortSpeedDuplex)(int DevIdx, int PhyPortIdx, uint32_t Speed, uint32_t FullDuplex);
    int (*EnablePort)(int DevIdx, int PortIdx);
    int (*DisablePort)(int DevIdx, int PortIdx);
    int (*EnableRgmiiDelay)(int DevIdx, int RgmiiPortIdx);
    int (*DisableRgmiiDelay)(int DevIdx, int RgmiiPortIdx);
    int (*EnableIgmpSnooping)(int DevIdx);
    int (*DisableIgmpSnooping)(int DevIdx);
    int (*EnablePhyPortEee)(int DevIdx, int PhyPortIdx);
    int (*DisablePhyPortEee)(int DevIdx, int PhyPortIdx);
    /* DstPortIdx 255: no mirroring of the source. */
    int (*SetPortMirror)(int DevIdx, int SrcPortIdx, int DstPortIdx);
    int (*ReadPortReg)(int DevIdx, int Port, int Reg, void* Value);
    int (*WritePortReg)(int DevIdx, int Port, int Reg, int Val);
    int (*VendorSpecificIoctl)(int DevIdx, int Cmd, void* Param);
    int (*PrintMachineState)(int DevIdx);
    int (*SetQWred)(int DevIdx, int A, int B, int C, int D, int E, int F, int G);
    int (*SetGlobWred)(int DevIdx, int A, int B, int C, int D, int E, int F, int G, int H, int I);
    int (*SetQRsrv)(int DevIdx, int A, int B);
    int (*SetPortFc)(int DevIdx, int Port, int A, int B);
    /* DvtTest 0 ends the test mode. */
    int (*SetPhyPortDvt)(int DevIdx, int PhyPortIdx, int DvtTest);
    int (*SetMacAging)(int DevIdx, int Aging);
    int (*GetEeePortState)(int DevIdx, int Port, uint32_t* EeeState);
    int (*SetMtuSize)(int DevIdx, int Mtu);
    /* Mac: 6 bytes, masked-out nibbles set to 0xF. Mask: bit 0 = last nibble of the address. */
    int (*MapSetMacToVlan)(int DevIdx, int LogPort, const uint8_t* Mac, int Mask, int VlanId,
                           int EnableMapping);
    int (*SmiRead)(int DevIdx, int Reg, void* Data);
    int (*SmiWrite)(int DevIdx, int Reg, int Data);
    /* Optional from here on. */
    int (*GetPortTestMode)(int DevIdx, int PortIdx, void* Mode);
    int (*SetPortTestMode)(int DevIdx, int PortIdx, int Mode);
    int (*GetLEDConfig)(int DevIdx, uint8_t* Mode);
    int (*SetLEDConfig)(int DevIdx, int Mode);
};

static_assert(sizeof(struct OBHAL_HalFuncs) == 42 * sizeof(void (*)(void)), "slots");

/* Defined by the HAL library. */
OB_EXPORT extern const struct OBHAL_HalFuncs OBHAL_HalFuncs;

#ifdef __cplusplus
}
#endif

#endif
