/* A HAL for both families whose slots do nothing: what remains of a call is the library's. */
#include "phy/ethphy_hal.h"
#include "switch/orblink_hal.h"

static int Init(void* privData)
{
    (void)privData;
    return 0;
}

static int GetPortLink(int devIdx, int portIdx, uint32_t* link, uint32_t* speed,
                       uint32_t* fullDuplex)
{
    (void)devIdx;
    (void)portIdx;
    *link = 1;
    *speed = OB_SPEED_1G;
    *fullDuplex = 1;
    return 0;
}

static int SetPort(int devIdx, int portIdx, int value)
{
    (void)devIdx;
    (void)portIdx;
    (void)value;
    return 0;
}

static int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context)
{
    (void)devIdx;
    struct MacEntry entry = {{0}, (uint32_t)(uintptr_t)context};
    for (unsigned i = 0; i < OB_MAC_TABLE_ENTRIES; ++i) {
        entry.data[5] = (uint8_t)i;
        if (callback(&entry) == 0)
            break;
    }
    return 0;
}

static int GetLink(int devIdx, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    return GetPortLink(devIdx, 0, link, speed, duplex);
}

const struct OBHAL_HalFuncs OBHAL_HalFuncs = {.Init = Init,
                                              .ForEachMacEntry = ForEachMacEntry,
                                              .SetLanPortVlan = SetPort,
                                              .SetLanPortPcp = SetPort,
                                              .GetPortLink = GetPortLink};
const struct ETHPHY_HalFuncs ETHPHY_HalFuncs = {.Init = Init, .GetLink = GetLink};
