/* A PHY HAL without a fault, or with the one that the environment asks for. */
#include "faulty_hal.h"

#include "phy/ethphy_hal.h"

static int Init(void* privData)
{
    memset(privData, 1, 1);
    return Has("init-fails") ? -1 : 0;
}

static int GetLink(int devIdx, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    uint16_t status = 0;
    if (EPHAL_ReadMdio((uint8_t)devIdx, 1, &status) != 0)
        return -1;
    *link = 1;
    if (Has("link-too-long"))
        link[1] = 0;
    if (speed)
        *speed = OB_SPEED_1G;
    if (duplex || Has("writes-null-duplex"))
        *duplex = 1;
    return 0;
}

static int ToPhy(int devIdx, int value)
{
    (void)devIdx;
    (void)value;
    return 0;
}

static int OnPhy(int devIdx)
{
    return ToPhy(devIdx, 0);
}

static int GetCaps(int devIdx, uint32_t* caps)
{
    *caps = 7;
    return OnPhy(devIdx);
}

static int Poll(int devIdx)
{
    uint8_t* data = EPHAL_GetHalPrivData((uint8_t)devIdx);
    if (Has("calls-the-api"))
        CallApi("ETHPHY_GetNumOfPhys");
    if (Has("writes-past-private-data"))
        ++data[EP_HAL_PRIV_DATA_SIZE];
    return OnPhy(devIdx);
}

OB_EXPORT const struct ETHPHY_HalFuncs ETHPHY_HalFuncs = {
    .Init = Init,
    .GetLink = GetLink,
    .SetAdminState = ToPhy,
    .ResetDisable = ToPhy,
    .ResetEnable = OnPhy,
    .GetCaps = GetCaps,
    .SetEeeState = ToPhy,
    .Poll = Poll,
};
