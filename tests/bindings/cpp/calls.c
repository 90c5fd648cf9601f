/* What a C program writes, for comparison with calls.cpp: the same functions by the C++ layer. */
#include <stdint.h>

#include "hals/vswitch/vswitch_hal.h"
#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"

int set_vlan(uint8_t device, uint8_t port, int vid)
{
    return ORBLINK_SetLanPortVlan(device, port, vid) == 0;
}

int set_speed(uint8_t device, uint8_t port)
{
    return ORBLINK_SetPhyPortSpeedDuplex(device, port, OB_SPEED_100M, 1) == 0;
}

int set_group(uint8_t device, uint8_t port)
{
    return ORBLINK_SetLanPortGroupId(device, port, 3, 1) == 0;
}

int map_station(uint8_t device, uint8_t port, const uint8_t* mac)
{
    return ORBLINK_MapMactoVlan(device, port, mac, 0xFFF, 7, 1) == 0;
}

int bring_up(uint8_t device, uint8_t* parameters, uint32_t size)
{
    return ORBLINK_ResetDisable(device, 1, parameters, size) == 0;
}

int count_switches(void)
{
    uint8_t count;
    return ORBLINK_GetNumOfSwitches(&count) == 0 ? count : -1;
}

int port_count(uint8_t device)
{
    struct SwitchCaps caps;
    return ORBLINK_GetSwitchCaps(device, &caps) == 0 ? caps.numOfPorts : -1;
}

int isolated(uint8_t device)
{
    uint32_t on = 0;
    return ORBLINK_GetIsolationModeEnabled(device, &on) == 0 && on != 0;
}

uint32_t link_speed(uint8_t device, uint8_t port)
{
    uint32_t link;
    uint32_t speed;
    uint32_t fullDuplex;
    if (ORBLINK_GetPortLink(device, port, &link, &speed, &fullDuplex) != 0 || link == 0)
        return OB_SPEED_UNKNOWN;
    return speed;
}

uint64_t octets(uint8_t device, uint8_t port)
{
    struct VswitchPortCounters counters;
    if (ORBLINK_GetPortCounters(device, port, &counters) != 0)
        return 0;
    return counters.etherStatsOctets;
}

int set_thresholds(uint8_t device, const uint16_t* limits)
{
    return ORBLINK_SetQWred(device, 1, limits[0], limits[1], limits[2], limits[3], limits[4],
                            limits[5]) == 0;
}

int read_register(uint8_t device)
{
    uint16_t value;
    return ORBLINK_SmiRead(device, 0x113, &value) == 0 ? value : -1;
}

int read_phy(uint8_t phy)
{
    uint16_t value;
    return ETHPHY_ReadMdio(phy, 2, &value) == 0 ? value : -1;
}

int disable_phy(uint8_t phy)
{
    return ETHPHY_SetAdminState(phy, 0) == 0;
}

const void* phy_record(uint8_t phy)
{
    void* place = 0;
    return ETHPHY_GetPhyData(phy, &place) == 0 ? place : 0;
}
