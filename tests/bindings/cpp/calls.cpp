// The functions of calls.c by the C++ layer.
#include "bindings/cpp/orblink.hpp"
#include "hals/vswitch/vswitch_hal.h"

using namespace orblink;

extern "C" {

int set_vlan(SwitchIndex device, PortIndex port, int vid)
{
    return bool(SetLanPortVlan(device, port, vid));
}

int set_speed(SwitchIndex device, PortIndex port)
{
    return bool(SetPhyPortSpeedDuplex(device, port, Speed::k100M, Duplex::kFull));
}

int set_group(SwitchIndex device, PortIndex port)
{
    return bool(SetLanPortGroupId(device, port, 3, GroupLock::kLock));
}

int map_station(SwitchIndex device, PortIndex port, const MacAddress* mac)
{
    return bool(MapMactoVlan(device, port, *mac, 0xFFF, 7, Mapping::kAdd));
}

int bring_up(SwitchIndex device, uint8_t* parameters, uint32_t size)
{
    return bool(ResetDisable(device, BringUp::kDefaults, {parameters, size}));
}

int count_switches()
{
    const auto count = GetNumOfSwitches();
    return count ? *count : -1;
}

int port_count(SwitchIndex device)
{
    const auto caps = GetSwitchCaps(device);
    return caps ? caps->numOfPorts : -1;
}

int isolated(SwitchIndex device)
{
    return GetIsolationModeEnabled(device).ValueOr(false);
}

uint32_t link_speed(SwitchIndex device, PortIndex port)
{
    const auto link = GetPortLink(device, port);
    return Number(link && link->IsUp() ? link->Speed() : Speed::kUnknown);
}

uint64_t octets(SwitchIndex device, PortIndex port)
{
    const auto counters = GetPortCounters<VswitchPortCounters>(device, port);
    return counters ? counters->etherStatsOctets : 0;
}

int set_thresholds(SwitchIndex device, const uint16_t* limits)
{
    return bool(SetQWred(device, 1, std::span<const uint16_t, 6>(limits, 6)));
}

int read_register(SwitchIndex device)
{
    const auto value = SmiRead(device, 0x113);
    return value ? *value : -1;
}

int read_phy(PhyIndex phy)
{
    const auto value = phy::ReadMdio(phy, 2);
    return value ? *value : -1;
}

int disable_phy(PhyIndex phy)
{
    return bool(phy::SetAdminState(phy, false));
}

const void* phy_record(PhyIndex phy)
{
    return phy::GetPhyData(phy).ValueOr(nullptr);
}

}  // extern "C"
