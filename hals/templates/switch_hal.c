/*
 * A switch HAL to begin with: small, complete, and at work on the virtual board, whose VS08 chip it
 * drives (docs/vswitch-registers.md). For another chip replace the registers and what the slots do
 * with them; Init, the private data, the walk and the table stay as they are.
 * docs/writing-a-hal.md says what each slot owes its caller; orblink-hal-check checks it.
 */
#define _DEFAULT_SOURCE /* usleep */
#include <string.h>
#include <unistd.h>

#include "switch/orblink_hal.h"

enum { PORTS = 8, MAC_SLOTS = 2048 };

/* Registers that every access goes through, and those behind them. */
enum { R_ID = 0, R_STATUS = 2, R_CONTROL = 3, R_ADDRESS = 4, R_DATA = 5 };
enum { CHIP_ID = 0x5608, STATUS_READY = 1, STATUS_RX_READY = 2, SOFT_RESET = 1, RX_RESET = 2 };
enum {
    A_CAPS = 0x100,
    A_BRIDGED = 0x111,
    A_TPID = 0x112,
    A_AGEING = 0x113,
    A_MTU = 0x114,
    A_SNOOPING = 0x115,
    A_LED = 0x116,
    A_MAC_INDEX = 0x200,
    A_MAC_COMMAND = 0x201,
    A_MAC_FIRST_WORD = 0x202,
    A_PORT = 0x1000
};
enum {
    P_INFO,
    P_CONTROL,
    P_STATUS,
    P_VID,
    P_PCP,
    P_TAG,
    P_GROUP,
    P_MIRROR,
    P_PHY = 0x10,
    P_EEE,
    P_RGMII = 0x18,
    P_SERDES = 0x1C
};

/* What every process needs to know of the switches lives in the private data and nowhere else. They
 * are not aligned: copy them in and out. */
struct PrivateData {
    uint32_t format;
    uint8_t preResetArg[OB_MAX_SWITCHES];
};
enum { FORMAT = 0x54504C31 };

static int Recall(int devIdx, struct PrivateData* data)
{
    const void* stored = OBHAL_GetHalPrivData((uint8_t)devIdx);
    if (!stored)
        return -1;
    memcpy(data, stored, sizeof *data);
    return data->format == FORMAT ? 0 : -1; /* zero: Init has not run, or has failed */
}

static int Remember(int devIdx, const struct PrivateData* data)
{
    void* stored = OBHAL_GetHalPrivData((uint8_t)devIdx);
    if (!stored)
        return -1;
    memcpy(stored, data, sizeof *data);
    return 0;
}

static int Read(int devIdx, int address, uint16_t* value)
{
    if (OBHAL_WriteMdio((uint8_t)devIdx, R_ADDRESS, (uint16_t)address) != 0)
        return -1;
    return OBHAL_ReadMdio((uint8_t)devIdx, R_DATA, value);
}

static int Write(int devIdx, int address, int value)
{
    if (OBHAL_WriteMdio((uint8_t)devIdx, R_ADDRESS, (uint16_t)address) != 0)
        return -1;
    return OBHAL_WriteMdio((uint8_t)devIdx, R_DATA, (uint16_t)value);
}

/* The lock is held meanwhile: a wait has an end. */
static int WaitFor(int devIdx, uint16_t bits)
{
    for (int i = 0; i < 100; ++i) {
        uint16_t status = 0;
        if (OBHAL_ReadMdio((uint8_t)devIdx, R_STATUS, &status) != 0)
            return -1;
        if ((status & bits) == bits)
            return 0;
        usleep(2000);
    }
    return -1;
}

static int IsPort(int port)
{
    return port >= 0 && port < PORTS;
}

static int WritePort(int devIdx, int port, int offset, int value)
{
    return IsPort(port) ? Write(devIdx, A_PORT + 0x100 * port + offset, value) : -1;
}

static int ReadPort(int devIdx, int port, int offset, uint16_t* value)
{
    return IsPort(port) ? Read(devIdx, A_PORT + 0x100 * port + offset, value) : -1;
}

static int Init(void* privData)
{
    const struct PrivateData fresh = {.format = FORMAT};
    memcpy(privData, &fresh, sizeof fresh);
    return 0;
}

static int ConnectSoc(int devIdx, int invert)
{
    const int port = OBHAL_GetInternalPortPidx((uint8_t)devIdx);
    const int fast = OBHAL_GetInternalPortIfaceMode((uint8_t)devIdx) == OB_IFACE_HSGMII;
    const int speed = fast ? OB_SPEED_2G5 : OB_SPEED_AUTONEG;
    return WritePort(devIdx, port, P_SERDES, fast | speed << 1 | (invert & 3) << 4);
}

static int ResetSwitch(int devIdx, const void* params, uint32_t size)
{
    struct PrivateData data;
    uint16_t id = 0;
    (void)params; /* null, or up to 32 bytes that this chip has no use for */
    (void)size;
    if (Recall(devIdx, &data) != 0 || OBHAL_ReadMdio((uint8_t)devIdx, R_ID, &id) != 0 ||
        id != CHIP_ID || WaitFor(devIdx, STATUS_READY) != 0 ||
        OBHAL_WriteMdio((uint8_t)devIdx, R_CONTROL, SOFT_RESET) != 0 ||
        WaitFor(devIdx, STATUS_READY | STATUS_RX_READY) != 0)
        return -1;
    return ConnectSoc(devIdx, data.preResetArg[devIdx]);
}

static int GetSwitchCaps(int devIdx, struct SwitchCaps* caps)
{
    struct SwitchCaps found = {.numOfPorts = PORTS};
    uint16_t flags = 0;
    if (WaitFor(devIdx, STATUS_READY) != 0 || Read(devIdx, A_CAPS, &flags) != 0)
        return -1;
    found.capsFlags = flags & (OB_CAPS_NO_SNOOPING | OB_CAPS_EEE | OB_CAPS_MIRRORING);
    for (int port = 0; port < PORTS; ++port) {
        uint16_t info = 0;
        if (ReadPort(devIdx, port, P_INFO, &info) != 0)
            return -1;
        found.port[port].portIfaceType = info & 7;
        found.port[port].portHasPhy = info >> 3 & 1;
    }
    *caps = found;
    return 0;
}

/* Reads the first entry at or above a place: 1 found, 0 none, -1 no answer. */
static int NextMac(int devIdx, int place, struct MacEntry* entry, uint16_t* found)
{
    uint16_t result = 0;
    if (Write(devIdx, A_MAC_INDEX, place) != 0 || Write(devIdx, A_MAC_COMMAND, 1) != 0)
        return -1;
    do {
        if (Read(devIdx, A_MAC_COMMAND, &result) != 0)
            return -1;
    } while (result & 0x8000);
    if (result & 0x4000)
        return 0;
    for (size_t i = 0; i < 6; ++i) { /* three words of address, VLAN, port, age */
        uint16_t word = 0;
        if (Read(devIdx, A_MAC_FIRST_WORD + (int)i, &word) != 0)
            return -1;
        entry->data[2 * i] = (uint8_t)(word >> 8);
        entry->data[2 * i + 1] = (uint8_t)word;
    }
    return Read(devIdx, A_MAC_INDEX, found) == 0 && *found >= place ? 1 : -1;
}

static int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context)
{
    if (!callback)
        return -1;
    for (int place = 0; place < MAC_SLOTS;) {
        struct MacEntry entry = {.contextWord = (uint32_t)(uintptr_t)context};
        uint16_t found = 0;
        const int result = NextMac(devIdx, place, &entry, &found);
        if (result <= 0)
            return result;
        if (callback(&entry) == 0)
            return 0;
        place = found + 1;
    }
    return 0;
}

static int EnableProviderBridgedMode(int devIdx, int tpid)
{
    return Write(devIdx, A_TPID, tpid) == 0 ? Write(devIdx, A_BRIDGED, 1) : -1;
}

static int DisableProviderBridgedMode(int devIdx)
{
    return Write(devIdx, A_BRIDGED, 0);
}

static int SetLanPortVlan(int devIdx, int port, int vid)
{
    return WritePort(devIdx, port, P_VID, vid);
}

static int SetLanPortEgressTagging(int devIdx, int port, uint32_t enable)
{
    return enable <= 1 ? WritePort(devIdx, port, P_TAG, (int)enable) : -1;
}

static int SetLanPortGroupId(int devIdx, int port, uint32_t group)
{
    if (group == (uint32_t)OB_NO_GROUP)
        return WritePort(devIdx, port, P_GROUP, 0);
    return group <= 255 ? WritePort(devIdx, port, P_GROUP, 0x8000 | (int)group) : -1;
}

static int SetLanPortPcp(int devIdx, int port, int pcp)
{
    return WritePort(devIdx, port, P_PCP, pcp);
}

static int GetPortLink(int devIdx, int port, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    uint16_t status = 0;
    if (ReadPort(devIdx, port, P_STATUS, &status) != 0)
        return -1;
    if (link)
        *link = status & 1;
    if (speed)
        *speed = status >> 2 & 7; /* the chip's codes are those of enum OB_Speed */
    if (duplex)
        *duplex = status >> 1 & 1;
    return 0;
}

static int SetPhyPortSpeedDuplex(int devIdx, int port, uint32_t speed, uint32_t fullDuplex)
{
    if (speed < OB_SPEED_AUTONEG || speed > OB_SPEED_1G)
        return -1;
    return WritePort(devIdx, port, P_PHY, (int)speed | (fullDuplex ? 8 : 0));
}

static int EnablePort(int devIdx, int port)
{
    return WritePort(devIdx, port, P_CONTROL, 1);
}

static int DisablePort(int devIdx, int port)
{
    return WritePort(devIdx, port, P_CONTROL, 0);
}

static int EnableRgmiiDelay(int devIdx, int port)
{
    return WritePort(devIdx, port, P_RGMII, 1);
}

static int DisableRgmiiDelay(int devIdx, int port)
{
    return WritePort(devIdx, port, P_RGMII, 0);
}

static int EnableIgmpSnooping(int devIdx)
{
    return Write(devIdx, A_SNOOPING, 3);
}

static int DisableIgmpSnooping(int devIdx)
{
    return Write(devIdx, A_SNOOPING, 0);
}

static int EnablePhyPortEee(int devIdx, int port)
{
    return WritePort(devIdx, port, P_EEE, 1);
}

static int DisablePhyPortEee(int devIdx, int port)
{
    return WritePort(devIdx, port, P_EEE, 0);
}

static int SetPortMirror(int devIdx, int source, int destination)
{
    if (destination == OB_NO_MIRROR)
        return WritePort(devIdx, source, P_MIRROR, 0);
    return IsPort(destination) ? WritePort(devIdx, source, P_MIRROR, 0x8000 | destination) : -1;
}

static int ReadPortReg(int devIdx, int port, int reg, void* value)
{
    uint16_t read = 0;
    if (!value || reg < 0 || reg > 0xFF || ReadPort(devIdx, port, reg, &read) != 0)
        return -1;
    memcpy(value, &read, sizeof read);
    return 0;
}

static int WritePortReg(int devIdx, int port, int reg, int value)
{
    return reg >= 0 && reg <= 0xFF ? WritePort(devIdx, port, reg, value) : -1;
}

static int PreReset(int devIdx, const struct ObhalPreReset* arguments)
{
    struct PrivateData data;
    if (!arguments || Recall(devIdx, &data) != 0)
        return -1;
    data.preResetArg[devIdx] = arguments->preResetArg; /* the chip may still be held in reset */
    return Remember(devIdx, &data);
}

static int VendorSpecificIoctl(int devIdx, int command, void* param)
{
    if (command == OBHAL_IOCTL_PRE_RESET)
        return PreReset(devIdx, param);
    if (command != OBHAL_IOCTL_RX_RESET || WaitFor(devIdx, STATUS_RX_READY) != 0 ||
        OBHAL_WriteMdio((uint8_t)devIdx, R_CONTROL, RX_RESET) != 0)
        return -1;
    return WaitFor(devIdx, STATUS_RX_READY);
}

static int SetMacAging(int devIdx, int step)
{
    return Write(devIdx, A_AGEING, step);
}

static int GetEeePortState(int devIdx, int port, uint32_t* state)
{
    uint16_t info = 0, eee = 0;
    if (ReadPort(devIdx, port, P_INFO, &info) != 0 ||
        ((info & 8) && ReadPort(devIdx, port, P_EEE, &eee) != 0))
        return -1;
    *state = eee & 1;
    return 0;
}

static int SetMtuSize(int devIdx, int mtu)
{
    return Write(devIdx, A_MTU, mtu);
}

static int SmiRead(int devIdx, int reg, void* data)
{
    uint16_t read = 0;
    if (!data || Read(devIdx, reg, &read) != 0)
        return -1;
    memcpy(data, &read, sizeof read);
    return 0;
}

static int SmiWrite(int devIdx, int reg, int data)
{
    return Write(devIdx, reg, data);
}

static int GetLEDConfig(int devIdx, uint8_t* mode)
{
    uint16_t value = 0;
    if (Read(devIdx, A_LED, &value) != 0)
        return -1;
    *mode = (uint8_t)value;
    return 0;
}

static int SetLEDConfig(int devIdx, int mode)
{
    return Write(devIdx, A_LED, mode);
}

/* Mandatory slots must be there. Those of what a chip cannot do fail. */
static int NotOfSwitch(int devIdx)
{
    (void)devIdx;
    return -1;
}

static int NotOfPort(int devIdx, int port)
{
    (void)port;
    return NotOfSwitch(devIdx);
}

static int NoCounters(int devIdx, int port, void* counters)
{
    (void)counters;
    return NotOfPort(devIdx, port);
}

static int NoPortValue(int devIdx, int port, int value)
{
    (void)value;
    return NotOfPort(devIdx, port);
}

static int NoFlowControl(int devIdx, int port, int a, int b)
{
    (void)a;
    return NoPortValue(devIdx, port, b);
}

static int NoQueueWred(int devIdx, int a, int b, int c, int d, int e, int f, int g)
{
    (void)(b + c + d + e + f + g);
    return NotOfPort(devIdx, a);
}

static int NoWred(int devIdx, int a, int b, int c, int d, int e, int f, int g, int h, int i)
{
    (void)(h + i);
    return NoQueueWred(devIdx, a, b, c, d, e, f, g);
}

static int NoMacVlan(int devIdx, int port, const uint8_t* mac, int mask, int vid, int enable)
{
    (void)mac;
    (void)(mask + vid + enable);
    return NotOfPort(devIdx, port);
}

/* GetPortTestMode and SetPortTestMode are left out: with the LED slots, they are those that may. */
OB_EXPORT const struct OBHAL_HalFuncs OBHAL_HalFuncs = {
    .Init = Init,
    .ResetSwitch = ResetSwitch,
    .GetSwitchCaps = GetSwitchCaps,
    .ForEachMacEntry = ForEachMacEntry,
    .EnableProviderBridgedMode = EnableProviderBridgedMode,
    .DisableProviderBridgedMode = DisableProviderBridgedMode,
    .SetLanPortVlan = SetLanPortVlan,
    .SetLanPortEgressTagging = SetLanPortEgressTagging,
    .SetLanPortGroupId = SetLanPortGroupId,
    .SetLanPortPcp = SetLanPortPcp,
    .GetPortCounters = NoCounters,
    .ResetPortCounters = NotOfPort,
    .GetPortLink = GetPortLink,
    .SetPhyPortSpeedDuplex = SetPhyPortSpeedDuplex,
    .EnablePort = EnablePort,
    .DisablePort = DisablePort,
    .EnableRgmiiDelay = EnableRgmiiDelay,
    .DisableRgmiiDelay = DisableRgmiiDelay,
    .EnableIgmpSnooping = EnableIgmpSnooping,
    .DisableIgmpSnooping = DisableIgmpSnooping,
    .EnablePhyPortEee = EnablePhyPortEee,
    .DisablePhyPortEee = DisablePhyPortEee,
    .SetPortMirror = SetPortMirror,
    .ReadPortReg = ReadPortReg,
    .WritePortReg = WritePortReg,
    .VendorSpecificIoctl = VendorSpecificIoctl,
    .PrintMachineState = NotOfSwitch,
    .SetQWred = NoQueueWred,
    .SetGlobWred = NoWred,
    .SetQRsrv = NoPortValue,
    .SetPortFc = NoFlowControl,
    .SetPhyPortDvt = NoPortValue,
    .SetMacAging = SetMacAging,
    .GetEeePortState = GetEeePortState,
    .SetMtuSize = SetMtuSize,
    .MapSetMacToVlan = NoMacVlan,
    .SmiRead = SmiRead,
    .SmiWrite = SmiWrite,
    .GetLEDConfig = GetLEDConfig,
    .SetLEDConfig = SetLEDConfig,
};
