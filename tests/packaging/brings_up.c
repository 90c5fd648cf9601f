/* All that a gateway does at boot, by one program: brings up the first switch and the first PHY. */
#include <stdio.h>

#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"

int main(void)
{
    uint8_t switches = 0;
    uint8_t phys = 0;
    uint32_t link, speed, duplex;
    if (ORBLINK_InitOnce(0) != 0 || ETHPHY_InitOnce() != 0)
        return 1;
    if (ORBLINK_ResetDisable(0, 1, NULL, 0) != 0 || ETHPHY_ResetDisable(0, 1) != 0)
        return 2;
    if (ORBLINK_SetLanPortVlan(0, 2, 100) != 0)
        return 3;
    if (ORBLINK_GetPortLink(0, 2, &link, &speed, &duplex) != 0)
        return 3;
    if (ORBLINK_GetNumOfSwitches(&switches) != 0 || ETHPHY_GetNumOfPhys(&phys) != 0)
        return 4;
    printf("%d, %d\n", switches, phys);
    return 0;
}
