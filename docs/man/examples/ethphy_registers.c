/* Reads the identifier of PHY 0, and what it offers for 2.5 Gb/s. */
#include <stdio.h>

#include "phy/ethphy_api.h"

int main(void)
{
    uint16_t high, low, offered;
    if (ETHPHY_ReadMdio(0, 2, &high) != 0 || ETHPHY_ReadMdio(0, 3, &low) != 0)
        return 1;
    printf("%04x%04x\n", high, low);
    return ETHPHY_ReadMmd(0, 7, 32, &offered) == 0 ? 0 : 1;
}
