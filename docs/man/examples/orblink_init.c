/* How many switches there are, and how many ports each has. */
#include <stdio.h>

#include "switch/orblink_api.h"

int main(void)
{
    uint8_t count;
    if (ORBLINK_GetNumOfSwitches(&count) != 0)
        return 1;
    for (uint8_t device = 0; device < count; ++device) {
        struct SwitchCaps caps;
        if (ORBLINK_GetSwitchCaps(device, &caps) == 0)
            printf("switch %d: %d ports\n", device, caps.numOfPorts);
    }
    return 0;
}
