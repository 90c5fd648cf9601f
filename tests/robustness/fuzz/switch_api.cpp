// The switch family over a region, HALs and system calls that are as the input says.
#include "board/board_services.h"
#include "switch/orblink_api.h"
#include "switch/orblink_hal.h"
#include "switch_hal_services/orblink_hal_services.h"
#include "tests/robustness/fuzz/any_call.h"

namespace {

using namespace fuzz;

template <auto Function>
void Run()
{
    CallAny(Function);
}

uint32_t Visit(MacEntry* entry)
{
    volatile uint8_t last = reinterpret_cast<uint8_t*>(entry)[sizeof *entry - 1];
    return last != 0 && Any<bool>() ? 1 : 0;
}

void Walk()
{
    ORBLINK_ForEachMacEntry(Any<uint8_t>() % 3, Any<uint8_t>() < 0xF0 ? Visit : nullptr);
}

// The size belongs to the buffer.
void BringUp()
{
    Arguments arguments;
    auto size = platform.input->ConsumeIntegralInRange<uint32_t>(0, 64);
    auto* parameters = static_cast<uint8_t*>(arguments.Allocate(size));
    ORBLINK_ResetDisable(Any<uint8_t>() % 3, Any<int>(), Any<bool>() ? parameters : nullptr, size);
}

// A record for each switch.
void InitHwSpecificData()
{
    Arguments arguments;
    auto* bsd = arguments.Draw<SwitchBsd*>();
    auto* vendor = arguments.Allocate(OB_MAX_SWITCHES * sizeof(SwitchVendorRecord));
    OBOS_InitHwSpecificData(bsd, Any<bool>() ? static_cast<SwitchVendorRecord*>(vendor) : nullptr);
}

constexpr void (*kCalls[])() = {
    Walk,
    BringUp,
    Run<ORBLINK_InitOnce>,
    Run<ORBLINK_GetNumOfSwitches>,
    Run<ORBLINK_GetSwitchCaps>,
    Run<ORBLINK_GetSwitchProvConfig>,
    Run<ORBLINK_GetSwitchDevices>,
    Run<ORBLINK_GetIsolationModeEnabled>,
    Run<ORBLINK_ResetEnable>,
    Run<ORBLINK_isBatteryMode>,
    Run<ORBLINK_GetMacAddresses>,
    Run<ORBLINK_IsOrbLinkServiceOn>,
    Run<ORBLINK_SetOrbLinkServiceStatus>,
    Run<ORBLINK_EnableProviderBridgedMode>,
    Run<ORBLINK_DisableProviderBridgedMode>,
    Run<ORBLINK_SetLanPortVlan>,
    Run<ORBLINK_SetLanPortGroupId>,
    Run<ORBLINK_SetLanPortPcp>,
    Run<ORBLINK_SetLanPortEgressTagging>,
    Run<ORBLINK_MapMactoVlan>,
    Run<ORBLINK_GetMactoVlanTable>,
    Run<ORBLINK_GetPortCounters>,
    Run<ORBLINK_ResetPortCounters>,
    Run<ORBLINK_GetPortLink>,
    Run<ORBLINK_SetPhyPortSpeedDuplex>,
    Run<ORBLINK_EnablePort>,
    Run<ORBLINK_GetPortEnable>,
    Run<ORBLINK_DisablePort>,
    Run<ORBLINK_EnableRgmiiDelay>,
    Run<ORBLINK_DisableRgmiiDelay>,
    Run<ORBLINK_GetEeePortState>,
    Run<ORBLINK_EnablePhyPortEee>,
    Run<ORBLINK_DisablePhyPortEee>,
    Run<ORBLINK_SetPortMirror>,
    Run<ORBLINK_GetPortIEEETestMode>,
    Run<ORBLINK_SetPortIEEETestMode>,
    Run<ORBLINK_EnablePhyPortDvt>,
    Run<ORBLINK_DisablePhyPortDvt>,
    Run<ORBLINK_GetMacTable>,
    Run<ORBLINK_EnableIgmpSnooping>,
    Run<ORBLINK_DisableIgmpSnooping>,
    Run<ORBLINK_ReadPortReg>,
    Run<ORBLINK_WritePortReg>,
    Run<ORBLINK_VendorSpecificIoctl>,
    Run<ORBLINK_PrintMachineState>,
    Run<ORBLINK_SetQWred>,
    Run<ORBLINK_SetGlobWred>,
    Run<ORBLINK_SetQRsrv>,
    Run<ORBLINK_SetPortFc>,
    Run<ORBLINK_SetMacAging>,
    Run<ORBLINK_SetMtuSize>,
    Run<ORBLINK_SmiRead>,
    Run<ORBLINK_SmiWrite>,
    Run<ORBLINK_GetLEDConfig>,
    Run<ORBLINK_SetLEDConfig>,
    Run<OBOS_CreateSwitchDevices>,
    Run<OBOS_MapSwitchDevices>,
    Run<OBOS_GetConfiguredDevice>,
    Run<OBOS_InitBsdFromIni>,
    InitHwSpecificData,
    Run<OBOS_SetGpioValue>,
    Run<OBOS_ResetSerDes>,
    Run<OBOS_GetMacAddresses>,
    Run<OBHAL_GetHalPrivData>,
    Run<OBHAL_GetInternalPortPidx>,
    Run<OBHAL_GetInternalPortIfaceMode>,
    Run<OBHAL_GetInternalPortIfaceSpeed>,
    Run<OBHAL_GetMtuSize>,
    Run<OBHAL_GetSwitchCount>,
    Run<OBHAL_GetMdioParams>,
    Run<OBHAL_ReadMdio>,
    Run<OBHAL_WriteMdio>,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    Scene scene{input, input.ConsumeBool()};
    SpoilRegion(Family::kSwitch);
    for (int count = 0; count < 20 && input.remaining_bytes() > 0; ++count) {
        kCalls[Any<uint8_t>() % std::size(kCalls)]();
        CheckReleased();
    }
    return 0;
}
