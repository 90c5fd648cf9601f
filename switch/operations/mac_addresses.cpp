#include "switch/orblink_api.h"

int ORBLINK_GetMacAddresses(uint8_t* Mac0, uint8_t* Mac1, uint8_t* Mac2, uint8_t* Mac3,
                            uint8_t* Mac4)
{
    return OBOS_GetMacAddresses(Mac0, Mac1, Mac2, Mac3, Mac4);
}
