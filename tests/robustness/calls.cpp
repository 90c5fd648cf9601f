#include "tests/robustness/calls.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>

#include "board/board_services.h"
#include "phy/ethphy_api.h"
#include "phy/ethphy_hal.h"
#include "switch/orblink_api.h"
#include "switch_hal_services/orblink_hal_services.h"
#include "tests/phy/phy_fixture.h"
#include "tests/support/switch_fixture.h"

namespace obtest {
namespace {

constexpr Family kNone = Family::kNone;
constexpr Family kSwitch = Family::kSwitch;
constexpr Family kPhy = Family::kPhy;

const uint8_t kMac[6] = {0x02, 0x00, 0x00, 0x00, 0x12, 0x34};

// What the calls write: large enough for each, and nobody's business. One for each thread.
thread_local uint32_t out[2048];
thread_local uint8_t macs[5][6];

void* Out()
{
    return out;
}

uint16_t* Out16()
{
    return reinterpret_cast<uint16_t*>(out);
}

uint8_t* Out8()
{
    return reinterpret_cast<uint8_t*>(out);
}

int NotNull(const void* pointer)
{
    return pointer == nullptr ? -1 : 0;
}

// The result of an accessor, which cannot fail.
int Any(uint32_t)
{
    return 0;
}

SwitchProvConfig& Config()
{
    return Record(0).config;
}

std::vector<ExportedCall> SwitchCalls()
{
    return {
        {"ORBLINK_GetNumOfSwitches", kSwitch, [] { return ORBLINK_GetNumOfSwitches(Out8()); }},
        {"ORBLINK_GetSwitchCaps", kSwitch, [] { return ORBLINK_GetSwitchCaps(0, Out()); }},
        {"ORBLINK_GetSwitchProvConfig", kSwitch,
         [] { return ORBLINK_GetSwitchProvConfig(0, Out()); }},
        {"ORBLINK_GetSwitchDevices", kSwitch, [] { return ORBLINK_GetSwitchDevices(Out()); }},
        {"ORBLINK_GetIsolationModeEnabled", kSwitch,
         [] { return ORBLINK_GetIsolationModeEnabled(0, out); }},
        {"ORBLINK_ResetDisable", kSwitch,
         [] {
             uint8_t parameters[8] = {1, 2, 3, 4, 5, 6, 7, 8};
             return ORBLINK_ResetDisable(0, 1, parameters, sizeof(parameters));
         },
         [] {
             Config().state = OB_STATE_RESET;
             Config().mtuSize = 1600;
             Config().lanPortVlan[3] = 77;
         }},
        {"ORBLINK_ResetEnable", kSwitch, [] { return ORBLINK_ResetEnable(0); },
         [] { Record(0).dvtPorts = 0x7E; }},
        {"ORBLINK_IsOrbLinkServiceOn", kSwitch, [] { return Any(ORBLINK_IsOrbLinkServiceOn(0)); }},
        {"ORBLINK_SetOrbLinkServiceStatus", kSwitch,
         [] { return ORBLINK_SetOrbLinkServiceStatus(0, 5); }},
        {"ORBLINK_EnableProviderBridgedMode", kSwitch,
         [] { return ORBLINK_EnableProviderBridgedMode(0, 0x88A8); }},
        {"ORBLINK_DisableProviderBridgedMode", kSwitch,
         [] { return ORBLINK_DisableProviderBridgedMode(0); },
         [] { Config().InProviderBridgedMode = 1; }},
        {"ORBLINK_SetLanPortVlan", kSwitch, [] { return ORBLINK_SetLanPortVlan(0, 2, 100); }},
        {"ORBLINK_SetLanPortGroupId", kSwitch,
         [] { return ORBLINK_SetLanPortGroupId(0, 2, 7, 2); }},
        {"ORBLINK_SetLanPortPcp", kSwitch, [] { return ORBLINK_SetLanPortPcp(0, 2, 5); }},
        {"ORBLINK_SetLanPortEgressTagging", kSwitch,
         [] { return ORBLINK_SetLanPortEgressTagging(0, 2, 2); }},
        {"ORBLINK_MapMactoVlan", kSwitch,
         [] { return ORBLINK_MapMactoVlan(0, 2, kMac, 0xFFF, 100, 1); }},
        {"ORBLINK_GetMactoVlanTable", kSwitch, [] { return ORBLINK_GetMactoVlanTable(0, Out()); }},
        {"ORBLINK_GetPortCounters", kSwitch, [] { return ORBLINK_GetPortCounters(0, 2, Out()); }},
        {"ORBLINK_ResetPortCounters", kSwitch, [] { return ORBLINK_ResetPortCounters(0, 2); }},
        {"ORBLINK_GetPortLink", kSwitch,
         [] { return ORBLINK_GetPortLink(0, 2, out, out + 1, out + 2); }},
        {"ORBLINK_SetPhyPortSpeedDuplex", kSwitch,
         [] { return ORBLINK_SetPhyPortSpeedDuplex(0, 2, 3, 0); }},
        {"ORBLINK_EnablePort", kSwitch, [] { return ORBLINK_EnablePort(0, 2); },
         [] { Config().enabledPorts = 0; }},
        {"ORBLINK_GetPortEnable", kSwitch, [] { return ORBLINK_GetPortEnable(0, 2, out); }},
        {"ORBLINK_DisablePort", kSwitch, [] { return ORBLINK_DisablePort(0, 2); },
         [] { Record(0).dvtPorts = 0x7E; }},
        {"ORBLINK_EnableRgmiiDelay", kSwitch, [] { return ORBLINK_EnableRgmiiDelay(0, 7); }},
        {"ORBLINK_DisableRgmiiDelay", kSwitch, [] { return ORBLINK_DisableRgmiiDelay(0, 7); },
         [] { Config().rgmiiDelayPorts = 0xFF; }},
        {"ORBLINK_GetEeePortState", kSwitch, [] { return ORBLINK_GetEeePortState(0, 2, out); }},
        {"ORBLINK_EnablePhyPortEee", kSwitch, [] { return ORBLINK_EnablePhyPortEee(0, 2); },
         [] { Config().eeePorts = 0; }},
        {"ORBLINK_DisablePhyPortEee", kSwitch, [] { return ORBLINK_DisablePhyPortEee(0, 2); }},
        {"ORBLINK_SetPortMirror", kSwitch, [] { return ORBLINK_SetPortMirror(0, 2, 0); }},
        {"ORBLINK_GetPortIEEETestMode", kSwitch,
         [] { return ORBLINK_GetPortIEEETestMode(0, 2, Out()); }},
        {"ORBLINK_SetPortIEEETestMode", kSwitch,
         [] { return ORBLINK_SetPortIEEETestMode(0, 2, 3); }},
        {"ORBLINK_EnablePhyPortDvt", kSwitch, [] { return ORBLINK_EnablePhyPortDvt(0, 2, 3); }},
        {"ORBLINK_DisablePhyPortDvt", kSwitch, [] { return ORBLINK_DisablePhyPortDvt(0, 2); },
         [] { Record(0).dvtPorts = 0x7E; }},
        {"ORBLINK_ForEachMacEntry", kSwitch,
         [] { return ORBLINK_ForEachMacEntry(0, [](MacEntry*) { return 1U; }); }},
        {"ORBLINK_GetMacTable", kSwitch,
         [] { return ORBLINK_GetMacTable(0, reinterpret_cast<MacTable*>(out)); }},
        {"ORBLINK_EnableIgmpSnooping", kSwitch, [] { return ORBLINK_EnableIgmpSnooping(0); }},
        {"ORBLINK_DisableIgmpSnooping", kSwitch, [] { return ORBLINK_DisableIgmpSnooping(0); },
         [] { Config().igmpSnooping = 1; }},
        {"ORBLINK_ReadPortReg", kSwitch, [] { return ORBLINK_ReadPortReg(0, 2, 1, Out()); }},
        {"ORBLINK_WritePortReg", kSwitch, [] { return ORBLINK_WritePortReg(0, 2, 1, 3); }},
        {"ORBLINK_VendorSpecificIoctl", kSwitch,
         [] { return ORBLINK_VendorSpecificIoctl(0, 9, nullptr); }},
        {"ORBLINK_PrintMachineState", kSwitch, [] { return ORBLINK_PrintMachineState(0); }},
        {"ORBLINK_SetQWred", kSwitch, [] { return ORBLINK_SetQWred(0, 1, 2, 3, 4, 5, 6, 7); }},
        {"ORBLINK_SetGlobWred", kSwitch,
         [] { return ORBLINK_SetGlobWred(0, 1, 2, 3, 4, 5, 6, 7, 8, 9); }},
        {"ORBLINK_SetQRsrv", kSwitch, [] { return ORBLINK_SetQRsrv(0, 1, 2); }},
        {"ORBLINK_SetPortFc", kSwitch, [] { return ORBLINK_SetPortFc(0, 1, 2, 3); }},
        {"ORBLINK_SetMacAging", kSwitch, [] { return ORBLINK_SetMacAging(0, 5); }},
        {"ORBLINK_SetMtuSize", kSwitch, [] { return ORBLINK_SetMtuSize(0, 1500); }},
        {"ORBLINK_SmiRead", kSwitch, [] { return ORBLINK_SmiRead(0, 1, Out()); }},
        {"ORBLINK_SmiWrite", kSwitch, [] { return ORBLINK_SmiWrite(0, 1, 2); }},
        {"ORBLINK_GetLEDConfig", kSwitch, [] { return ORBLINK_GetLEDConfig(0, Out8()); }},
        {"ORBLINK_SetLEDConfig", kSwitch, [] { return ORBLINK_SetLEDConfig(0, 1); }},
    };
}

std::vector<ExportedCall> PhyCalls()
{
    return {
        {"ETHPHY_GetNumOfPhys", kPhy, [] { return ETHPHY_GetNumOfPhys(Out8()); }},
        {"ETHPHY_GetLink", kPhy, [] { return ETHPHY_GetLink(0, out, out + 1, out + 2); }},
        {"ETHPHY_SetAdminState", kPhy, [] { return ETHPHY_SetAdminState(0, 0); }},
        {"ETHPHY_ResetSgmii", kPhy, [] { return ETHPHY_ResetSgmii(0); }},
        {"ETHPHY_ResetDisable", kPhy, [] { return ETHPHY_ResetDisable(0, 1); },
         [] {
             PhyRegion().phy[0].config.hwState = EP_HW_STATE_DISABLED;
             PhyRegion().phy[0].config.adminState = 0;
         }},
        {"ETHPHY_ResetEnable", kPhy, [] { return ETHPHY_ResetEnable(0); }},
        {"ETHPHY_GetProvisionedConfig", kPhy, [] { return ETHPHY_GetProvisionedConfig(0, Out()); }},
        {"ETHPHY_GetBsdConfig", kPhy, [] { return ETHPHY_GetBsdConfig(0, Out()); }},
        {"ETHPHY_GetPhyData", kPhy,
         [] {
             void* data = nullptr;
             return ETHPHY_GetPhyData(0, &data);
         }},
        {"ETHPHY_GetCaps", kPhy, [] { return ETHPHY_GetCaps(0, out); },
         [] { PhyRegion().phy[0].capsValid = 1; }},
        {"ETHPHY_ReadMdio", kPhy, [] { return ETHPHY_ReadMdio(0, 2, Out16()); }},
        {"ETHPHY_WriteMdio", kPhy, [] { return ETHPHY_WriteMdio(0, 4, 0x1E1); }},
        {"ETHPHY_ReadMmd", kPhy, [] { return ETHPHY_ReadMmd(0, 7, 60, Out16()); }},
        {"ETHPHY_WriteMmd", kPhy, [] { return ETHPHY_WriteMmd(0, 7, 60, 6); }},
        {"ETHPHY_ReadChipReg", kPhy, [] { return ETHPHY_ReadChipReg(0, 2, Out16()); }},
        {"ETHPHY_WriteChipReg", kPhy, [] { return ETHPHY_WriteChipReg(0, 4, 1); }},
        {"ETHPHY_GetCounters", kPhy, [] { return ETHPHY_GetCounters(0, Out()); }},
        {"ETHPHY_ResetCounters", kPhy, [] { return ETHPHY_ResetCounters(0); }},
        {"ETHPHY_SetEeeState", kPhy, [] { return ETHPHY_SetEeeState(0, 1); }},
        {"ETHPHY_Poll", kPhy, [] { return ETHPHY_Poll(0); }},
        {"ETHPHY_PhyZ88_SetSpeedDuplexMode", kPhy,
         [] { return ETHPHY_PhyZ88_SetSpeedDuplexMode(0, 3, 1); }},
    };
}

std::vector<ExportedCall> Services()
{
    return {
        {"ORBLINK_isBatteryMode", kNone, [] { return ORBLINK_isBatteryMode(); }},
        {"ORBLINK_GetMacAddresses", kNone,
         [] { return ORBLINK_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]); }},
        {"OBOS_CreateSwitchDevices", kNone, [] { return OBOS_CreateSwitchDevices(); }},
        {"OBOS_MapSwitchDevices", kNone, [] { return NotNull(OBOS_MapSwitchDevices()); }},
        {"OBOS_GetConfiguredDevice", kNone,
         [] {
             SwitchBoardEntry entry;
             return OBOS_GetConfiguredDevice(1, &entry, out);
         }},
        {"OBOS_InitBsdFromIni", kNone,
         [] {
             SwitchBsd bsd = {};
             return OBOS_InitBsdFromIni(&bsd);
         }},
        {"OBOS_SetGpioValue", kNone, [] { return OBOS_SetGpioValue(19, 1); }},
        {"OBOS_ResetSerDes", kNone, [] { return OBOS_ResetSerDes(1, 1); }},
        {"OBOS_GetMacAddresses", kNone,
         [] { return OBOS_GetMacAddresses(macs[0], macs[1], macs[2], macs[3], macs[4]); }},
        {"OBHAL_GetHalPrivData", kNone, [] { return NotNull(OBHAL_GetHalPrivData(0)); }},
        {"OBHAL_GetInternalPortPidx", kNone, [] { return OBHAL_GetInternalPortPidx(0); }},
        {"OBHAL_GetInternalPortIfaceMode", kNone,
         [] { return Any(OBHAL_GetInternalPortIfaceMode(0)); }},
        {"OBHAL_GetInternalPortIfaceSpeed", kNone,
         [] { return Any(OBHAL_GetInternalPortIfaceSpeed(0)); }},
        {"OBHAL_GetMtuSize", kNone, [] { return Any(OBHAL_GetMtuSize(0)); }},
        {"OBHAL_GetSwitchCount", kNone, [] { return Any(OBHAL_GetSwitchCount()); }},
        {"OBHAL_GetMdioParams", kNone, [] { return OBHAL_GetMdioParams(0, Out8(), Out8() + 1); }},
        {"OBHAL_ReadMdio", kNone, [] { return OBHAL_ReadMdio(0, 2, Out16()); }},
        {"OBHAL_WriteMdio", kNone, [] { return OBHAL_WriteMdio(0, 2, 7); }},
        {"EP_CreatePhyDevices", kNone, [] { return EP_CreatePhyDevices(); }},
        {"EP_MapEthphyDevices", kNone, [] { return NotNull(EP_MapEthphyDevices()); }},
        {"EPHAL_DirectMdioReadAccess", kNone,
         [] { return EPHAL_DirectMdioReadAccess(1, 2, 3, Out16()); }},
        {"EPHAL_DirectMdioWriteAccess", kNone,
         [] { return EPHAL_DirectMdioWriteAccess(1, 2, 3, 4); }},
        {"EPHAL_ReadMdio", kNone, [] { return EPHAL_ReadMdio(0, 2, Out16()); }},
        {"EPHAL_WriteMdio", kNone, [] { return EPHAL_WriteMdio(0, 4, 1); }},
        {"EPHAL_ReadMmd", kNone, [] { return EPHAL_ReadMmd(0, 7, 60, Out16()); }},
        {"EPHAL_WriteMmd", kNone, [] { return EPHAL_WriteMmd(0, 7, 60, 6); }},
        {"EPHAL_ReconfigureGmacPhy", kNone, [] { return EPHAL_ReconfigureGmacPhy(0, 1, 4, 1); }},
        {"EPHAL_SetInterfaceState", kNone, [] { return EPHAL_SetInterfaceState(0, 1); }},
        {"EPHAL_SetHwState", kNone, [] { return EPHAL_SetHwState(0, 0); }},
        {"EPHAL_GetHwState", kNone, [] { return EPHAL_GetHwState(0, out); }},
        {"EPHAL_GetUlpModeEnabled", kNone, [] { return EPHAL_GetUlpModeEnabled(0, out); }},
        {"EPHAL_GetHalPrivData", kNone, [] { return NotNull(EPHAL_GetHalPrivData(0)); }},
        {"EPHAL_GetPortIfaceMode", kNone, [] { return Any(EPHAL_GetPortIfaceMode(0)); }},
        {"EPHAL_GetPortIfaceSpeed", kNone, [] { return Any(EPHAL_GetPortIfaceSpeed(0)); }},
        {"EPHAL_GetMdioAddrAndBusId", kNone,
         [] { return EPHAL_GetMdioAddrAndBusId(0, Out8(), Out8() + 1); }},
    };
}

}  // namespace

const std::vector<ExportedCall>& ExportedCalls()
{
    static const std::vector<ExportedCall> calls = [] {
        std::vector<ExportedCall> all = SwitchCalls();
        for (const auto& more : {PhyCalls(), Services()})
            all.insert(all.end(), more.begin(), more.end());
        return all;
    }();
    return calls;
}

std::vector<ExportedCall> CallsOf(Family family)
{
    std::vector<ExportedCall> calls;
    std::copy_if(ExportedCalls().begin(), ExportedCalls().end(), std::back_inserter(calls),
                 [&](const ExportedCall& call) { return call.family == family; });
    return calls;
}

const ExportedCall& CallNamed(const std::string& name)
{
    for (const ExportedCall& call : ExportedCalls())
        if (call.name == name)
            return call;
    throw std::out_of_range(name);
}

void PrintTo(const ExportedCall& call, std::ostream* out)
{
    *out << call.name;
}

}  // namespace obtest
