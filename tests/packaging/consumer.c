/* What somebody else's program does with an installed library; compiles as C and as C++. */
#include <stdio.h>

#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"

int main(void)
{
    uint8_t switches = 0;
    uint8_t phys = 0;
    if (ORBLINK_GetNumOfSwitches(&switches) != 0 || ETHPHY_GetNumOfPhys(&phys) != 0)
        return 1;
    printf("%d, %d\n", switches, phys);
    return 0;
}
