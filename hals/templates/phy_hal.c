/*
 * A PHY HAL to begin with: small, complete, and at work on the virtual board, for a PHY with the
 * registers of IEEE 802.3 clause 22 up to 1000 Mb/s. For another PHY replace what the slots do with
 * its registers. docs/writing-a-hal.md says what each slot owes its caller; orblink-hal-check checks
 * it.
 */
#define _DEFAULT_SOURCE /* usleep */
#include <string.h>
#include <unistd.h>

#include "phy/ethphy_hal.h"

enum { R_CONTROL, R_STATUS, R_ID1, R_ID2, R_OFFER, R_PARTNER, R_OFFER_1000 = 9, R_PARTNER_1000 };
enum {
    RESET = 0x8000,
    SPEED_LOW = 0x2000,
    NEGOTIATE = 0x1000,
    POWER_DOWN = 0x0800,
    ISOLATE = 0x0400,
    RESTART = 0x0200,
    FULL_DUPLEX = 0x0100,
    SPEED_HIGH = 0x0040
};
enum { LINK_UP = 0x0004, NEGOTIATED = 0x0020, EXTENDED = 0x0100 };
enum { CAN_10 = 1, CAN_100 = 2, CAN_1000 = 4 };

/* What every process needs to know of the PHYs lives in the private data and nowhere else. */
struct PrivateData {
    uint32_t format;
    struct {
        uint32_t valid; /* the registers below were read before a reset */
        uint16_t offer;
        uint16_t offer1000;
    } kept[EP_MAX_PHYS];
};
enum { FORMAT = 0x54504C32 };

static int Recall(int devIdx, struct PrivateData* data)
{
    const void* stored = EPHAL_GetHalPrivData((uint8_t)devIdx);
    if (!stored)
        return -1;
    memcpy(data, stored, sizeof *data);
    return data->format == FORMAT ? 0 : -1; /* zero: Init has failed */
}

static int Remember(int devIdx, const struct PrivateData* data)
{
    void* stored = EPHAL_GetHalPrivData((uint8_t)devIdx);
    if (!stored)
        return -1;
    memcpy(stored, data, sizeof *data);
    return 0;
}

static int Read(int devIdx, uint32_t reg, uint16_t* value)
{
    return EPHAL_ReadMdio((uint8_t)devIdx, reg, value);
}

static int Write(int devIdx, uint32_t reg, int value)
{
    return EPHAL_WriteMdio((uint8_t)devIdx, reg, (uint16_t)value);
}

static int Init(void* privData)
{
    const struct PrivateData fresh = {.format = FORMAT};
    memcpy(privData, &fresh, sizeof fresh);
    return 0;
}

/* The best that both ends offer. */
static void Best(unsigned common, unsigned common1000, uint32_t* speed, uint32_t* duplex)
{
    *speed = common1000 & 0x300 ? OB_SPEED_1G
             : common & 0x180   ? OB_SPEED_100M
             : common & 0x060   ? OB_SPEED_10M
                                : OB_SPEED_UNKNOWN;
    *duplex = common1000 & 0x300 ? (common1000 & 0x200) != 0
              : common & 0x180   ? (common & 0x100) != 0
                                 : (common & 0x040) != 0;
}

static int ReadSpeed(int devIdx, uint32_t* speed, uint32_t* duplex)
{
    uint16_t control = 0, offer = 0, partner = 0, offer1000 = 0, partner1000 = 0;
    if (Read(devIdx, R_CONTROL, &control) != 0)
        return -1;
    if (!(control & NEGOTIATE)) {
        *speed = control & SPEED_HIGH  ? OB_SPEED_1G
                 : control & SPEED_LOW ? OB_SPEED_100M
                                       : OB_SPEED_10M;
        *duplex = (control & FULL_DUPLEX) != 0;
        return 0;
    }
    if (Read(devIdx, R_OFFER, &offer) != 0 || Read(devIdx, R_PARTNER, &partner) != 0 ||
        Read(devIdx, R_OFFER_1000, &offer1000) != 0 ||
        Read(devIdx, R_PARTNER_1000, &partner1000) != 0)
        return -1;
    Best(offer & partner, offer1000 & partner1000 >> 2, speed, duplex);
    return 0;
}

static int GetLink(int devIdx, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    uint32_t foundSpeed = OB_SPEED_UNKNOWN, foundDuplex = 0;
    uint16_t status = 0;
    if (!link || Read(devIdx, R_STATUS, &status) != 0 || Read(devIdx, R_STATUS, &status) != 0)
        return -1; /* read twice: the bit stays low after a drop until it is read */
    const int up = (status & LINK_UP) != 0;
    if (up && ReadSpeed(devIdx, &foundSpeed, &foundDuplex) != 0)
        return -1;
    *link = (uint32_t)up;
    if (speed)
        *speed = foundSpeed;
    if (duplex)
        *duplex = foundDuplex;
    return 0;
}

static int SetAdminState(int devIdx, int enable)
{
    uint16_t control = 0;
    if (Read(devIdx, R_CONTROL, &control) != 0)
        return -1;
    control = (uint16_t)(enable ? control & ~(POWER_DOWN | ISOLATE) : control | POWER_DOWN);
    return Write(devIdx, R_CONTROL, control & ~(RESET | RESTART));
}

/* The lock is held meanwhile: the wait has an end. */
static int Reset(int devIdx)
{
    if (Write(devIdx, R_CONTROL, RESET) != 0)
        return -1;
    for (int i = 0; i < 60; ++i) {
        uint16_t control = 0;
        usleep(10000);
        if (Read(devIdx, R_CONTROL, &control) == 0 && !(control & RESET))
            return 0;
    }
    return -1;
}

static int Keep(int devIdx, struct PrivateData* data)
{
    if (data->kept[devIdx].valid)
        return 0;
    if (Read(devIdx, R_OFFER, &data->kept[devIdx].offer) != 0 ||
        Read(devIdx, R_OFFER_1000, &data->kept[devIdx].offer1000) != 0)
        return -1;
    data->kept[devIdx].valid = 1;
    return Remember(devIdx, data);
}

static int ResetDisable(int devIdx, int defConfig)
{
    struct PrivateData data;
    uint16_t id = 0;
    if (Recall(devIdx, &data) != 0 || Read(devIdx, R_ID1, &id) != 0 || id == 0xFFFF)
        return -1;
    if ((!defConfig && Keep(devIdx, &data) != 0) || Reset(devIdx) != 0)
        return -1;
    if (!defConfig && (Write(devIdx, R_OFFER, data.kept[devIdx].offer) != 0 ||
                       Write(devIdx, R_OFFER_1000, data.kept[devIdx].offer1000) != 0))
        return -1;
    data.kept[devIdx].valid = 0;
    return Write(devIdx, R_CONTROL, NEGOTIATE | RESTART) == 0 ? Remember(devIdx, &data) : -1;
}

static int ResetEnable(int devIdx)
{
    struct PrivateData data;
    if (Recall(devIdx, &data) != 0 || Keep(devIdx, &data) != 0)
        return -1;
    return SetAdminState(devIdx, 0);
}

static int GetCaps(int devIdx, uint32_t* caps)
{
    uint16_t status = 0;
    if (Read(devIdx, R_STATUS, &status) != 0)
        return -1;
    *caps = (status & 0x1800 ? CAN_10 : 0) | (status & 0x6000 ? CAN_100 : 0) |
            (status & EXTENDED ? CAN_1000 : 0);
    return 0;
}

static int ReadChipReg(int devIdx, uint32_t reg, uint16_t* value)
{
    return value && reg <= 31 ? Read(devIdx, reg, value) : -1;
}

static int WriteChipReg(int devIdx, uint32_t reg, int value)
{
    return reg <= 31 ? Write(devIdx, reg, value) : -1;
}

/* Called every second or so by a program: a place for what has to be watched. */
static int Poll(int devIdx)
{
    uint16_t status = 0;
    return Read(devIdx, R_STATUS, &status);
}

/* The operations of the slots that are left out fail. */
OB_EXPORT const struct ETHPHY_HalFuncs ETHPHY_HalFuncs = {
    .Init = Init,
    .GetLink = GetLink,
    .SetAdminState = SetAdminState,
    .ResetDisable = ResetDisable,
    .ResetEnable = ResetEnable,
    .GetCaps = GetCaps,
    .ReadChipReg = ReadChipReg,
    .WriteChipReg = WriteChipReg,
    .Poll = Poll,
};
