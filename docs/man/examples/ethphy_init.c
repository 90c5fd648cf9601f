/* How many PHYs there are. */
#include <stdio.h>

#include "phy/ethphy_api.h"

int main(void)
{
    uint8_t count;
    if (ETHPHY_GetNumOfPhys(&count) != 0)
        return 1;
    printf("%d PHYs\n", count);
    return 0;
}
