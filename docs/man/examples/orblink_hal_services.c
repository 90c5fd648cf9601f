/* Two slots of a switch HAL: Init keeps nothing in the process, SmiRead asks the board where its
 * chip is. */
#include "switch_hal_services/orblink_hal_services.h"
#include "switch/orblink_hal.h"

int SmiRead(int device, int address, void* value);

int SmiRead(int device, int address, void* value)
{
    uint16_t* word = value;
    return OBHAL_ReadMdio((uint8_t)device, (uint32_t)address, word);
}
