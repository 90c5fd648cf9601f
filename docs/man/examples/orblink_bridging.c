/* Puts LAN port 2 into VLAN 100, and one station of it into VLAN 55. */
#include "switch/orblink_api.h"

int main(void)
{
    const uint8_t station[6] = {0x02, 0, 0, 0, 0, 0x09};
    if (ORBLINK_SetLanPortVlan(0, 2, 100) != 0)
        return 1;
    return ORBLINK_MapMactoVlan(0, 2, station, 0xFFF, 55, 1) == 0 ? 0 : 1;
}
