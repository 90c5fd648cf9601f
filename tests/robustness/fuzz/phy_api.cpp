// The PHY family over a region, HALs and system calls that are as the input says.
#include "board/board_services.h"
#include "phy/ethphy_api.h"
#include "phy/ethphy_hal.h"
#include "tests/robustness/fuzz/any_call.h"

namespace {

using namespace fuzz;

template <auto Function>
void Run()
{
    CallAny(Function);
}

constexpr void (*kCalls[])() = {
    Run<ETHPHY_InitOnce>,
    Run<ETHPHY_GetNumOfPhys>,
    Run<EP_CreatePhyDevices>,
    Run<EP_InitBoardSpecificData>,
    Run<EP_MapEthphyDevices>,
    Run<ETHPHY_ResetDisable>,
    Run<ETHPHY_ResetEnable>,
    Run<ETHPHY_ResetSgmii>,
    Run<ETHPHY_GetLink>,
    Run<ETHPHY_SetAdminState>,
    Run<ETHPHY_GetProvisionedConfig>,
    Run<ETHPHY_GetBsdConfig>,
    Run<ETHPHY_GetPhyData>,
    Run<ETHPHY_GetCaps>,
    Run<ETHPHY_Poll>,
    Run<ETHPHY_GetCounters>,
    Run<ETHPHY_ResetCounters>,
    Run<ETHPHY_SetEeeState>,
    Run<ETHPHY_ReadMdio>,
    Run<ETHPHY_WriteMdio>,
    Run<ETHPHY_ReadMmd>,
    Run<ETHPHY_WriteMmd>,
    Run<ETHPHY_ReadChipReg>,
    Run<ETHPHY_WriteChipReg>,
    Run<ETHPHY_PhyZ88_SetSpeedDuplexMode>,
    Run<EPHAL_DirectMdioReadAccess>,
    Run<EPHAL_DirectMdioWriteAccess>,
    Run<EPHAL_ReadMdio>,
    Run<EPHAL_WriteMdio>,
    Run<EPHAL_ReadMmd>,
    Run<EPHAL_WriteMmd>,
    Run<EPHAL_ReconfigureGmacPhy>,
    Run<EPHAL_SetInterfaceState>,
    Run<EPHAL_SetHwState>,
    Run<EPHAL_GetHwState>,
    Run<EPHAL_GetUlpModeEnabled>,
    Run<EPHAL_GetHalPrivData>,
    Run<EPHAL_GetPortIfaceMode>,
    Run<EPHAL_GetPortIfaceSpeed>,
    Run<EPHAL_GetMdioAddrAndBusId>,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    Scene scene{input, input.ConsumeBool()};
    SpoilRegion(Family::kPhy);
    for (int count = 0; count < 20 && input.remaining_bytes() > 0; ++count) {
        kCalls[Any<uint8_t>() % std::size(kCalls)]();
        CheckReleased();
    }
    return 0;
}
