/* The link of a PHY, as a HAL finds it: the register keeps a drop until it is read. */
#include "phy/ethphy_hal.h"

#define LINK_UP 0x0004

int GetLink(int phy, uint32_t* link, uint32_t* speed, uint32_t* duplex);

int GetLink(int phy, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    uint16_t status;
    if (EPHAL_ReadMdio((uint8_t)phy, 1, &status) != 0 ||
        EPHAL_ReadMdio((uint8_t)phy, 1, &status) != 0)
        return -1;
    *link = (status & LINK_UP) != 0;
    if (speed)
        *speed = OB_SPEED_UNKNOWN;
    if (duplex)
        *duplex = 0;
    return 0;
}
