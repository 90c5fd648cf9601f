/* Lists the ports of switch 0 that have a link. */
#include <stdio.h>

#include "switch/orblink_api.h"

int main(void)
{
    struct SwitchCaps caps;
    if (ORBLINK_GetSwitchCaps(0, &caps) != 0)
        return 1;
    for (uint8_t port = 0; port < caps.numOfPorts; ++port) {
        uint32_t link, speed, fullDuplex;
        if (ORBLINK_GetPortLink(0, port, &link, &speed, &fullDuplex) == 0 && link != 0)
            printf("port %d: %s\n", port, speed == OB_SPEED_1G ? "1 Gb/s" : "another speed");
    }
    return 0;
}
