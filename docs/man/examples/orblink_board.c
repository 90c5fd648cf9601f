/* Prints the MAC addresses of the board, which this process has to receive itself. */
#include <stdio.h>

#include "board/board_services.h"

int main(void)
{
    struct SwitchBsd data;
    struct SwitchVendorRecord vendor[OB_MAX_DEVICES];
    uint8_t mac[5][6];
    if (OBOS_InitHwSpecificData(&data, vendor) != 0 ||
        OBOS_GetMacAddresses(mac[0], mac[1], mac[2], mac[3], mac[4]) != 0)
        return 1;
    for (int i = 0; i < 5; ++i)
        printf("%02x:%02x:%02x:%02x:%02x:%02x\n", mac[i][0], mac[i][1], mac[i][2], mac[i][3],
               mac[i][4], mac[i][5]);
    return 0;
}
