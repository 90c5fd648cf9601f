// Switches: ports, VLANs, bridging. Each function is the C function of the same name, whose comment
// holds.
#pragma once

#include <span>

#include "result.hpp"
#include "switch/orblink_api.h"
#include "values.hpp"

namespace orblink {

// Counters as the HAL lays them out.
template <typename Counters>
Result<Counters> GetPortCounters(SwitchIndex device, PortIndex port)
{
    return Result<Counters>(
        [=](Counters* out) { return ORBLINK_GetPortCounters(Number(device), Number(port), out); });
}

inline Status ResetPortCounters(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_ResetPortCounters(Number(device), Number(port)));
}

inline Result<Link> GetPortLink(SwitchIndex device, PortIndex port)
{
    return Result<Link>([=](Link* out) {
        return ORBLINK_GetPortLink(Number(device), Number(port), &out->up, &out->speed,
                                   &out->fullDuplex);
    });
}

inline Status SetPhyPortSpeedDuplex(SwitchIndex device, PortIndex port, Speed speed, Duplex duplex)
{
    return Status(
        ORBLINK_SetPhyPortSpeedDuplex(Number(device), Number(port), Number(speed), Number(duplex)));
}

inline Status EnablePort(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_EnablePort(Number(device), Number(port)));
}

inline Status DisablePort(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_DisablePort(Number(device), Number(port)));
}

inline Result<bool> GetPortEnable(SwitchIndex device, PortIndex port)
{
    uint32_t enabled = 0;
    const int code = ORBLINK_GetPortEnable(Number(device), Number(port), &enabled);
    return Result<bool>(code, enabled != 0);
}

inline Status EnableRgmiiDelay(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_EnableRgmiiDelay(Number(device), Number(port)));
}

inline Status DisableRgmiiDelay(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_DisableRgmiiDelay(Number(device), Number(port)));
}

inline Result<uint32_t> GetEeePortState(SwitchIndex device, PortIndex port)
{
    return Result<uint32_t>(
        [=](uint32_t* out) { return ORBLINK_GetEeePortState(Number(device), Number(port), out); });
}

inline Status EnablePhyPortEee(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_EnablePhyPortEee(Number(device), Number(port)));
}

inline Status DisablePhyPortEee(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_DisablePhyPortEee(Number(device), Number(port)));
}

// To kNoPort: no longer.
inline Status SetPortMirror(SwitchIndex device, PortIndex from, PortIndex to)
{
    return Status(ORBLINK_SetPortMirror(Number(device), Number(from), Number(to)));
}

// While the switch is not enabled the value is that of Mode{}.
template <typename Mode = uint8_t>
Result<Mode> GetPortIEEETestMode(SwitchIndex device, PortIndex port)
{
    Mode mode{};
    const int code = ORBLINK_GetPortIEEETestMode(Number(device), Number(port), &mode);
    return Result<Mode>(code, mode);
}

inline Status SetPortIEEETestMode(SwitchIndex device, PortIndex port, uint8_t mode)
{
    return Status(ORBLINK_SetPortIEEETestMode(Number(device), Number(port), mode));
}

inline Status EnablePhyPortDvt(SwitchIndex device, PortIndex port, int test)
{
    return Status(ORBLINK_EnablePhyPortDvt(Number(device), Number(port), test));
}

inline Status DisablePhyPortDvt(SwitchIndex device, PortIndex port)
{
    return Status(ORBLINK_DisablePhyPortDvt(Number(device), Number(port)));
}

// ---- VLANs and provider bridging ----

inline Status EnableProviderBridgedMode(SwitchIndex device, uint16_t tpid)
{
    return Status(ORBLINK_EnableProviderBridgedMode(Number(device), tpid));
}

inline Status DisableProviderBridgedMode(SwitchIndex device)
{
    return Status(ORBLINK_DisableProviderBridgedMode(Number(device)));
}

inline Status SetLanPortVlan(SwitchIndex device, PortIndex port, int vid)
{
    return Status(ORBLINK_SetLanPortVlan(Number(device), Number(port), vid));
}

inline Status SetLanPortPcp(SwitchIndex device, PortIndex port, uint8_t pcp)
{
    return Status(ORBLINK_SetLanPortPcp(Number(device), Number(port), pcp));
}

inline Status SetLanPortEgressTagging(SwitchIndex device, PortIndex port, uint32_t tagging)
{
    return Status(ORBLINK_SetLanPortEgressTagging(Number(device), Number(port), tagging));
}

inline Status SetLanPortGroupId(SwitchIndex device, PortIndex port, uint32_t group, GroupLock lock)
{
    return Status(ORBLINK_SetLanPortGroupId(Number(device), Number(port), group, Number(lock)));
}

inline Status MapMactoVlan(SwitchIndex device, PortIndex port, const MacAddress& mac, uint16_t mask,
                           uint16_t vid, Mapping mapping)
{
    return Status(
        ORBLINK_MapMactoVlan(Number(device), Number(port), mac.data(), mask, vid, Number(mapping)));
}

// Free entries included: those whose EnableMapping is 0.
inline Status GetMactoVlanTable(SwitchIndex device,
                                std::span<MacToVlanEntry, OB_MAC_VLAN_ENTRIES> table)
{
    return Status(ORBLINK_GetMactoVlanTable(Number(device), table.data()));
}

}  // namespace orblink
