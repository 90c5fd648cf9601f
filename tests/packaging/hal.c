/* The least that somebody else's HAL library needs of an installed kit. */
#include "switch/orblink_hal.h"
#include "switch_hal_services/orblink_hal_services.h"

OB_EXPORT void* own_data(uint32_t DevIdx)
{
    return OBHAL_GetHalPrivData(DevIdx);
}
