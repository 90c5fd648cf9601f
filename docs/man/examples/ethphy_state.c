/* Says whether PHY 0 is enabled, and whether it has a link. */
#include <stdio.h>

#include "phy/ethphy_api.h"

int main(void)
{
    struct PhyProvConfig config;
    uint32_t link, speed, duplex;
    if (ETHPHY_GetProvisionedConfig(0, &config) != 0 ||
        ETHPHY_GetLink(0, &link, &speed, &duplex) != 0)
        return 1;
    printf("%s, link %s\n", config.adminState != 0 ? "enabled" : "disabled",
           link != 0 ? "up" : "down");
    return 0;
}
