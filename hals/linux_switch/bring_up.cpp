// Init, reset, capabilities and the ioctl.
#include <errno.h>
#include <linux/if_bridge.h>
#include <string.h>

#include "hals/linux_switch/ethtool.h"
#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/mapping.h"
#include "hals/linux_switch/reset.h"
#include "hals/linux_switch/session.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

// Fewer than four bytes are allowed only when there are none at all.
bool TakeParameters(const void* params, uint32_t size, uint8_t& isolation)
{
    uint32_t first = 0;
    if (!params || size == 0)
        return true;
    if (size < sizeof first)
        return false;
    memcpy(&first, params, sizeof first);
    isolation = first != 0 ? 1 : 0;
    return true;
}

bool HasEee(Ethtool& ethtool, const Link& link)
{
    EeeState state;
    return ethtool.GetEee(link.index, state) == 0 && state.supported;
}

}  // namespace

int Init(void* privateData)
{
    SwitchMemory memories[OB_MAX_SWITCHES];
    int loaded = 0;
    if (!privateData)
        return -1;
    for (int devIdx = 0; devIdx < OB_MAX_SWITCHES; ++devIdx) {
        const Loaded result = LoadMapping(devIdx, memories[devIdx]);
        if (result == Loaded::kFailed)
            return -1;
        loaded += result == Loaded::kYes ? 1 : 0;
    }
    if (loaded == 0) {
        LS_ERROR("There is no mapping file linux-switch-0.toml");
        return -1;
    }
    FormatMemory(privateData, memories);
    return 0;
}

int ResetSwitch(int devIdx, const void* params, uint32_t size)
{
    SwitchMemory memory;
    if (!Recall(devIdx, memory))
        return -1;
    if (OBHAL_GetInternalPortPidx(static_cast<uint8_t>(devIdx)) != memory.cpuPort) {
        LS_ERROR("The board's internal port is not the mapping's cpu_port %d, DevIdx=%d",
                 memory.cpuPort, devIdx);
        return -1;
    }
    if (!TakeParameters(params, size, memory.isolation)) {
        LS_ERROR("Vendor parameters of %u bytes are too short, DevIdx=%d", size, devIdx);
        return -1;
    }
    return Reset(devIdx, memory.isolation);
}

int GetSwitchCaps(int devIdx, SwitchCaps* caps)
{
    Session session(devIdx);
    if (!caps || !session.Recall() || session.FindAll() != 0)
        return -1;
    const SwitchMemory& memory = session.Memory();
    Ethtool ethtool;
    SwitchCaps found{};
    found.capsFlags = OB_CAPS_MIRRORING;
    if (session.Bridge() && !session.Bridge().snoops)
        found.capsFlags |= OB_CAPS_NO_SNOOPING;
    found.numOfPorts = memory.ports;
    for (int port = 0; port < memory.ports; ++port) {
        // The library restores the VLANs of ports with a PHY only.
        found.port[port].portHasPhy = memory.IsLanPort(port) ? 1 : 0;
        if (memory.IsLanPort(port) && session.Port(port) && HasEee(ethtool, session.Port(port)))
            found.capsFlags |= OB_CAPS_EEE;
    }
    *caps = found;
    return 0;
}

int VendorSpecificIoctl(int devIdx, int cmd, void* param)
{
    switch (cmd) {
        case OBHAL_IOCTL_RX_RESET:
        case OBHAL_IOCTL_PRE_RESET:
            return 0;  // nothing between the CPU and the ports needs it
        case LINUX_SWITCH_IOCTL_FLUSH_MAC:
            return FlushMacs(devIdx) ? 0 : -1;
        case LINUX_SWITCH_IOCTL_ADD_STATIC_MAC:
            return AddStaticMac(devIdx, param) ? 0 : -1;
        case LINUX_SWITCH_IOCTL_DELETE_MAC:
            return DeleteMac(devIdx, param) ? 0 : -1;
        default:
            LS_ERROR("Unknown command %d, DevIdx=%d", cmd, devIdx);
            return -1;
    }
}

}  // namespace linux_switch
