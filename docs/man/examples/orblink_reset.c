/* Restarts switch 0 with its stored configuration. */
#include <stdio.h>

#include "switch/orblink_api.h"

int main(void)
{
    if (ORBLINK_isBatteryMode() != 0) {
        puts("not on battery");
        return 1;
    }
    if (ORBLINK_ResetEnable(0) != 0)
        return 1;
    return ORBLINK_ResetDisable(0, 0, NULL, 0) == 0 ? 0 : 1;
}
