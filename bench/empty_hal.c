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

static int Device(int devIdx)
{
    (void)devIdx;
    return 0;
}

static int DeviceValue(int devIdx, int value)
{
    (void)devIdx;
    (void)value;
    return 0;
}

static int PortValue(int devIdx, int portIdx, int value)
{
    (void)devIdx;
    (void)portIdx;
    (void)value;
    return 0;
}

static int PortWord(int devIdx, int portIdx, uint32_t value)
{
    return PortValue(devIdx, portIdx, (int)value);
}

static int PortData(int devIdx, int portIdx, void* data)
{
    (void)data;
    return DeviceValue(devIdx, portIdx);
}

static int PortFlag(int devIdx, int portIdx, uint32_t* flag)
{
    *flag = 0;
    return DeviceValue(devIdx, portIdx);
}

static int PortRegister(int devIdx, int portIdx, int reg, void* value)
{
    (void)reg;
    return PortData(devIdx, portIdx, value);
}

static int WritePort(int devIdx, int portIdx, int reg, int value)
{
    (void)reg;
    return PortValue(devIdx, portIdx, value);
}

static int ResetSwitch(int devIdx, const void* params, uint32_t size)
{
    (void)params;
    (void)size;
    return Device(devIdx);
}

static int GetSwitchCaps(int devIdx, struct SwitchCaps* caps)
{
    (void)caps;
    return Device(devIdx);
}

static int SetSpeed(int devIdx, int portIdx, uint32_t speed, uint32_t fullDuplex)
{
    (void)speed;
    return PortWord(devIdx, portIdx, fullDuplex);
}

static int MapMac(int devIdx, int logPort, const uint8_t* mac, int mask, int vlanId, int enable)
{
    (void)mac;
    (void)mask;
    (void)vlanId;
    return PortValue(devIdx, logPort, enable);
}

static int SetQWred(int devIdx, int a, int b, int c, int d, int e, int f, int g)
{
    (void)(b + c + d + e + f + g);
    return DeviceValue(devIdx, a);
}

static int SetGlobWred(int devIdx, int a, int b, int c, int d, int e, int f, int g, int h, int i)
{
    (void)(h + i);
    return SetQWred(devIdx, a, b, c, d, e, f, g);
}

static int GetMode(int devIdx, uint8_t* mode)
{
    *mode = 1;
    return Device(devIdx);
}

static int GetCaps(int devIdx, uint32_t* caps)
{
    *caps = 0;
    return Device(devIdx);
}

static int Counters(int devIdx, void* counters)
{
    (void)counters;
    return Device(devIdx);
}

static int ReadRegister(int devIdx, uint32_t reg, uint16_t* value)
{
    (void)reg;
    *value = 0;
    return Device(devIdx);
}

static int WriteRegister(int devIdx, uint32_t reg, int value)
{
    (void)reg;
    return DeviceValue(devIdx, value);
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

const struct OBHAL_HalFuncs OBHAL_HalFuncs = {
    .Init = Init,
    .ResetSwitch = ResetSwitch,
    .GetSwitchCaps = GetSwitchCaps,
    .ForEachMacEntry = ForEachMacEntry,
    .EnableProviderBridgedMode = DeviceValue,
    .DisableProviderBridgedMode = Device,
    .SetLanPortVlan = PortValue,
    .SetLanPortEgressTagging = PortWord,
    .SetLanPortGroupId = PortWord,
    .SetLanPortPcp = PortValue,
    .GetPortCounters = PortData,
    .ResetPortCounters = DeviceValue,
    .GetPortLink = GetPortLink,
    .SetPhyPortSpeedDuplex = SetSpeed,
    .EnablePort = DeviceValue,
    .DisablePort = DeviceValue,
    .EnableRgmiiDelay = DeviceValue,
    .DisableRgmiiDelay = DeviceValue,
    .EnableIgmpSnooping = Device,
    .DisableIgmpSnooping = Device,
    .EnablePhyPortEee = DeviceValue,
    .DisablePhyPortEee = DeviceValue,
    .SetPortMirror = PortValue,
    .ReadPortReg = PortRegister,
    .WritePortReg = WritePort,
    .VendorSpecificIoctl = PortData,
    .PrintMachineState = Device,
    .SetQWred = SetQWred,
    .SetGlobWred = SetGlobWred,
    .SetQRsrv = PortValue,
    .SetPortFc = WritePort,
    .SetPhyPortDvt = PortValue,
    .SetMacAging = DeviceValue,
    .GetEeePortState = PortFlag,
    .SetMtuSize = DeviceValue,
    .MapSetMacToVlan = MapMac,
    .SmiRead = PortData,
    .SmiWrite = PortValue,
    .GetPortTestMode = PortData,
    .SetPortTestMode = PortValue,
    .GetLEDConfig = GetMode,
    .SetLEDConfig = DeviceValue,
};
const struct ETHPHY_HalFuncs ETHPHY_HalFuncs = {
    .Init = Init,
    .GetLink = GetLink,
    .SetAdminState = DeviceValue,
    .ResetDisable = DeviceValue,
    .ResetEnable = Device,
    .GetCaps = GetCaps,
    .GetCounters = Counters,
    .ResetCounters = Device,
    .ReadChipReg = ReadRegister,
    .WriteChipReg = WriteRegister,
    .SetEeeState = DeviceValue,
    .Poll = Device,
};
