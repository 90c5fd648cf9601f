// A switch HAL library whose slots are played by the test program. The table is not constant, so
// that a test can take slots away.
#include <type_traits>

#define OBHAL_HalFuncs OBHAL_HalFuncsConst
#include "switch/orblink_hal.h"
#undef OBHAL_HalFuncs
#include "tests/support/scripted_hal_call.h"

extern "C" {
__attribute__((visibility("default"))) extern struct OBHAL_HalFuncsConst OBHAL_HalFuncs;

struct OBHAL_HalFuncsConst OBHAL_HalFuncs = {
    OB_SLOT(Init, "p"),
    OB_SLOT(ResetSwitch, "ipu"),
    OB_SLOT(GetSwitchCaps, "ip"),
    OB_SLOT(ForEachMacEntry, "ipp"),
    OB_SLOT(EnableProviderBridgedMode, "ii"),
    OB_SLOT(DisableProviderBridgedMode, "i"),
    OB_SLOT(SetLanPortVlan, "iii"),
    OB_SLOT(SetLanPortEgressTagging, "iiu"),
    OB_SLOT(SetLanPortGroupId, "iiu"),
    OB_SLOT(SetLanPortPcp, "iii"),
    OB_SLOT(GetPortCounters, "iip"),
    OB_SLOT(ResetPortCounters, "ii"),
    OB_SLOT(GetPortLink, "iippp"),
    OB_SLOT(SetPhyPortSpeedDuplex, "iiuu"),
    OB_SLOT(EnablePort, "ii"),
    OB_SLOT(DisablePort, "ii"),
    OB_SLOT(EnableRgmiiDelay, "ii"),
    OB_SLOT(DisableRgmiiDelay, "ii"),
    OB_SLOT(EnableIgmpSnooping, "i"),
    OB_SLOT(DisableIgmpSnooping, "i"),
    OB_SLOT(EnablePhyPortEee, "ii"),
    OB_SLOT(DisablePhyPortEee, "ii"),
    OB_SLOT(SetPortMirror, "iii"),
    OB_SLOT(ReadPortReg, "iiip"),
    OB_SLOT(WritePortReg, "iiii"),
    OB_SLOT(VendorSpecificIoctl, "iip"),
    OB_SLOT(PrintMachineState, "i"),
    OB_SLOT(SetQWred, "iiiiiiii"),
    OB_SLOT(SetGlobWred, "iiiiiiiiii"),
    OB_SLOT(SetQRsrv, "iii"),
    OB_SLOT(SetPortFc, "iiii"),
    OB_SLOT(SetPhyPortDvt, "iii"),
    OB_SLOT(SetMacAging, "ii"),
    OB_SLOT(GetEeePortState, "iip"),
    OB_SLOT(SetMtuSize, "ii"),
    OB_SLOT(MapSetMacToVlan, "iimiii"),
    OB_SLOT(SmiRead, "iip"),
    OB_SLOT(SmiWrite, "iii"),
    OB_SLOT(GetPortTestMode, "iip"),
    OB_SLOT(SetPortTestMode, "iii"),
    OB_SLOT(GetLEDConfig, "ip"),
    OB_SLOT(SetLEDConfig, "ii"),
};
}
