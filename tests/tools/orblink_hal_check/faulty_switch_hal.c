/* A switch HAL without a fault, or with the one that the environment asks for. */
#include "faulty_hal.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#define OBHAL_HalFuncs OBHAL_HalFuncsConst
#include "switch/orblink_hal.h"
#undef OBHAL_HalFuncs

enum { PORTS = 4 };

struct PrivateData {
    uint32_t ready;
    uint32_t resets;
    uint8_t ledMode[OB_MAX_SWITCHES];
};

static void* keptPrivateData;
static uint32_t* keptLink;
static MacEntryCallback keptCallback;
static uint8_t ledModeOfProcess;
static uint32_t capsRead;

static struct PrivateData Recall(int devIdx)
{
    struct PrivateData data = {0};
    const void* stored = OBHAL_GetHalPrivData((uint8_t)devIdx);
    if (stored)
        memcpy(&data, stored, sizeof data);
    return data;
}

static void Remember(int devIdx, const struct PrivateData* data)
{
    void* stored = OBHAL_GetHalPrivData((uint8_t)devIdx);
    if (stored)
        memcpy(stored, data, sizeof *data);
}

static int IsPort(int port)
{
    return port >= 0 && port < PORTS;
}

static int Init(void* privData)
{
    const struct PrivateData fresh = {.ready = 1};
    if (Has("init-fails"))
        return -1;
    memcpy(privData, &fresh, sizeof fresh);
    if (Has("init-writes-past-private-data"))
        memset(privData, 0, OB_HAL_PRIV_DATA_SIZE + 4);
    keptPrivateData = privData;
    return 0;
}

static int ResetSwitch(int devIdx, const void* params, uint32_t size)
{
    struct PrivateData data = Recall(devIdx);
    if (Has("bring-up-fails") || (Has("restore-fails") && data.resets > 0))
        return -1;
    if (Has("keeps-private-data-pointer"))
        return *(volatile uint8_t*)keptPrivateData == 1 ? 0 : -1;
    if (Has("reads-null-parameters") && size > 0)
        return *(const volatile uint8_t*)params == 255;
    if (Has("crashes-with-zero-private-data") && data.ready == 0)
        Crash();
    ++data.resets;
    Remember(devIdx, &data);
    return 0;
}

static int GetSwitchCaps(int devIdx, struct SwitchCaps* caps)
{
    struct SwitchCaps found = {.capsFlags = OB_CAPS_EEE | OB_CAPS_MIRRORING, .numOfPorts = PORTS};
    (void)devIdx;
    for (int port = 1; port < PORTS; ++port) {
        found.port[port].portIfaceType = port == 3 ? OB_IFACE_RGMII : OB_IFACE_GMII;
        found.port[port].portHasPhy = port < 3;
    }
    if (Has("nine-ports"))
        found.numOfPorts = 9;
    if (Has("unknown-interface-type"))
        found.port[1].portIfaceType = 7;
    if (Has("caps-change"))
        found.halDefined[0] = (uint8_t)++capsRead;
    *caps = found;
    if (Has("caps-too-long"))
        memset(caps + 1, 0, 4);
    return 0;
}

static int ForEachMacEntry(int devIdx, MacEntryCallback callback, void* context)
{
    if (!callback)
        return -1;
    keptCallback = callback;
    for (int i = 0; i < 3; ++i) {
        struct MacEntry entry = {.contextWord = (uint32_t)(uintptr_t)context};
        entry.data[0] = (uint8_t)(devIdx + i);
        if (Has("walk-loses-context"))
            entry.contextWord = 0x12345678;
        if (callback(Has("walk-hands-out-null") ? NULL : &entry) == 0 && !Has("walk-never-stops"))
            return 0;
    }
    return 0;
}

static int OnSwitch(int devIdx)
{
    (void)devIdx;
    return 0;
}

static int ToSwitch(int devIdx, int value)
{
    (void)value;
    return OnSwitch(devIdx);
}

static int OnPort(int devIdx, int port)
{
    (void)devIdx;
    return IsPort(port) ? 0 : -1;
}

static int ToPort(int devIdx, int port, int value)
{
    (void)value;
    return OnPort(devIdx, port);
}

static int WordToPort(int devIdx, int port, uint32_t value)
{
    (void)value;
    return OnPort(devIdx, port);
}

static int SetLanPortPcp(int devIdx, int port, int pcp)
{
    if (Has("ends-the-program"))
        exit(0);
    return ToPort(devIdx, port, pcp);
}

static int GetPortCounters(int devIdx, int port, void* counters)
{
    if (!counters || !IsPort(port))
        return -1;
    memset(counters, 0, 64);
    if (Has("counters-too-long"))
        memset(counters, 0, 72);
    return OnPort(devIdx, port);
}

static int GetPortLink(int devIdx, int port, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    uint16_t id = 0;
    if (OBHAL_ReadMdio((uint8_t)devIdx, 0, &id) != 0 && !Has("hides-bus-failure"))
        return -1;
    if (!IsPort(port))
        return -1;
    if (Has("keeps-link-pointer")) {
        if (keptLink)
            *keptLink = 0;
        keptLink = link;
    }
    if (link)
        *link = 1;
    if (speed)
        *speed = Has("unknown-speed") ? 9 : OB_SPEED_1G;
    if (duplex)
        *duplex = 1;
    return 0;
}

static int SetSpeed(int devIdx, int port, uint32_t speed, uint32_t duplex)
{
    (void)duplex;
    return WordToPort(devIdx, port, speed);
}

static int EnablePort(int devIdx, int port)
{
    if (Has("crashes-on-unknown-port") && port >= 8)
        Crash();
    return OnPort(devIdx, port);
}

static int DisablePort(int devIdx, int port)
{
    return Has("accepts-unknown-port") ? 0 : OnPort(devIdx, port);
}

static int SetPortMirror(int devIdx, int source, int destination)
{
    return ToPort(devIdx, source, destination);
}

static int ReadPortReg(int devIdx, int port, int reg, void* value)
{
    (void)reg;
    if (!value || !IsPort(port))
        return -1;
    memset(value, 0x11, 2);
    return OnPort(devIdx, port);
}

static int WritePortReg(int devIdx, int port, int reg, int value)
{
    (void)reg;
    return ToPort(devIdx, port, value);
}

static int VendorSpecificIoctl(int devIdx, int command, void* param)
{
    (void)param;
    return command == OBHAL_IOCTL_RX_RESET || command == OBHAL_IOCTL_PRE_RESET ? OnSwitch(devIdx)
                                                                               : -1;
}

static int PrintMachineState(int devIdx)
{
    if (Has("hangs"))
        for (;;)
            pause();
    if (Has("calls-back-later") && keptCallback) {
        struct MacEntry entry = {0};
        keptCallback(&entry);
    }
    return OnSwitch(devIdx);
}

static int SetQWred(int devIdx, int a, int b, int c, int d, int e, int f, int g)
{
    (void)(a + b + c + d + e + f + g);
    return OnSwitch(devIdx);
}

static int SetGlobWred(int devIdx, int a, int b, int c, int d, int e, int f, int g, int h, int i)
{
    if (Has("sleeps-for-seconds"))
        sleep(5);
    return SetQWred(devIdx, a, b, c, d, e, f, g + h + i);
}

static int SetQRsrv(int devIdx, int queue, int buffers)
{
    (void)buffers;
    return ToSwitch(devIdx, queue);
}

static int SetMacAging(int devIdx, int step)
{
    if (Has("crashes"))
        Crash();
    return ToSwitch(devIdx, step);
}

static int GetEeePortState(int devIdx, int port, uint32_t* state)
{
    if (!Has("forgets-result"))
        *state = 1;
    return OnPort(devIdx, port);
}

static void* Sleep(void* nothing)
{
    for (;;)
        pause();
    return nothing;
}

static void LeaveThread(void)
{
    pthread_t thread = 0;
    pthread_create(&thread, NULL, Sleep, NULL);
}

static int SetMtuSize(int devIdx, int mtu)
{
    uint8_t* data = OBHAL_GetHalPrivData((uint8_t)devIdx);
    if (Has("calls-the-api"))
        CallApi("ORBLINK_GetNumOfSwitches");
    if (Has("writes-past-private-data"))
        ++data[OB_HAL_PRIV_DATA_SIZE];
    if (Has("leaves-a-thread"))
        LeaveThread();
    if (Has("leaves-a-descriptor"))
        (void)!open("/dev/null", O_RDONLY);
    if (Has("changes-the-mask"))
        umask(0);
    if (Has("blocks-signals"))
        signal(SIGUSR1, SIG_IGN);
    return ToSwitch(devIdx, mtu);
}

static int MapSetMacToVlan(int devIdx, int port, const uint8_t* mac, int mask, int vid, int enable)
{
    (void)(mask + vid);
    if (Has("writes-to-the-address"))
        *(uint8_t*)(uintptr_t)mac = 0;
    return ToPort(devIdx, port, enable);
}

static int SmiRead(int devIdx, int reg, void* data)
{
    (void)reg;
    if (!data)
        return -1;
    memset(data, 0x22, 2);
    return OnSwitch(devIdx);
}

static int GetLEDConfig(int devIdx, uint8_t* mode)
{
    if (Has("writes-before-the-mode"))
        mode[-1] = 0;
    *mode = Has("keeps-led-mode-in-process") ? ledModeOfProcess : Recall(devIdx).ledMode[devIdx];
    return 0;
}

static int SetLEDConfig(int devIdx, int mode)
{
    struct PrivateData data = Recall(devIdx);
    data.ledMode[devIdx] = (uint8_t)(mode + (Has("stores-another-led-mode") ? 1 : 0));
    ledModeOfProcess = (uint8_t)mode;
    Remember(devIdx, &data);
    return 0;
}

#ifdef IMPORTS
int Imported(void)
{
    return ORBLINK_isBatteryMode();
}
#endif

OB_EXPORT extern struct OBHAL_HalFuncsConst OBHAL_HalFuncs;
struct OBHAL_HalFuncsConst OBHAL_HalFuncs = {
    .Init = Init,
    .ResetSwitch = ResetSwitch,
    .GetSwitchCaps = GetSwitchCaps,
    .ForEachMacEntry = ForEachMacEntry,
    .EnableProviderBridgedMode = ToSwitch,
    .DisableProviderBridgedMode = OnSwitch,
    .SetLanPortVlan = ToPort,
    .SetLanPortEgressTagging = WordToPort,
    .SetLanPortGroupId = WordToPort,
    .SetLanPortPcp = SetLanPortPcp,
    .GetPortCounters = GetPortCounters,
    .ResetPortCounters = OnPort,
    .GetPortLink = GetPortLink,
    .SetPhyPortSpeedDuplex = SetSpeed,
    .EnablePort = EnablePort,
    .DisablePort = DisablePort,
    .EnableRgmiiDelay = OnPort,
    .DisableRgmiiDelay = OnPort,
    .EnableIgmpSnooping = OnSwitch,
    .DisableIgmpSnooping = OnSwitch,
    .EnablePhyPortEee = OnPort,
    .DisablePhyPortEee = OnPort,
    .SetPortMirror = SetPortMirror,
    .ReadPortReg = ReadPortReg,
    .WritePortReg = WritePortReg,
    .VendorSpecificIoctl = VendorSpecificIoctl,
    .PrintMachineState = PrintMachineState,
    .SetQWred = SetQWred,
    .SetGlobWred = SetGlobWred,
    .SetQRsrv = SetQRsrv,
    .SetPortFc = WritePortReg,
    .SetPhyPortDvt = ToPort,
    .SetMacAging = SetMacAging,
    .GetEeePortState = GetEeePortState,
    .SetMtuSize = SetMtuSize,
    .MapSetMacToVlan = MapSetMacToVlan,
    .SmiRead = SmiRead,
    .SmiWrite = SetQRsrv,
    .GetLEDConfig = GetLEDConfig,
    .SetLEDConfig = SetLEDConfig,
};

__attribute__((constructor)) static void SpoilTable(void)
{
    static int noCode;
    if (Has("slot-is-missing"))
        OBHAL_HalFuncs.SetMtuSize = NULL;
    if (Has("slot-is-no-code"))
        OBHAL_HalFuncs.SetMtuSize = (int (*)(int, int))(uintptr_t)&noCode;
}
