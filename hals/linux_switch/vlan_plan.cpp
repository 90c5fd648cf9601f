#include "hals/linux_switch/vlan_plan.h"

#include <linux/if_bridge.h>
#include <linux/if_ether.h>

namespace linux_switch {
namespace {

bool IsSteeredInto(const SwitchMemory& memory, int port, uint16_t vid)
{
    for (const Steering& steering : memory.steering) {
        if (steering.used && steering.port == port && steering.vid == vid)
            return true;
    }
    return false;
}

int FlagsOfCpuPort(const SwitchMemory& memory, uint16_t vid)
{
    // With service tags every frame to the CPU shows its own.
    if (vid == kDefaultVid)
        return memory.tpid == ETH_P_8021Q ? BRIDGE_VLAN_INFO_PVID | BRIDGE_VLAN_INFO_UNTAGGED
                                          : BRIDGE_VLAN_INFO_PVID;
    for (int port = 0; port < memory.ports; ++port) {
        if (memory.IsLanPort(port) && FlagsIn(memory, port, vid) != kNotMember)
            return 0;
    }
    return kNotMember;
}

}  // namespace

void VidList::Add(uint16_t added)
{
    for (int i = 0; i < count; ++i) {
        if (vid[i] == added)
            return;
    }
    vid[count++] = added;
}

VidList VidsOf(const SwitchMemory& memory, int port)
{
    const bool all = port == memory.cpuPort;
    VidList list;
    if (all)
        list.Add(kDefaultVid);
    for (int other = 0; other < memory.ports; ++other) {
        if (memory.IsLanPort(other) && (all || other == port))
            list.Add(memory.port[other].vid);
    }
    for (const Steering& steering : memory.steering) {
        if (steering.used && (all || steering.port == port))
            list.Add(steering.vid);
    }
    return list;
}

int FlagsIn(const SwitchMemory& memory, int port, uint16_t vid)
{
    if (port == memory.cpuPort)
        return FlagsOfCpuPort(memory, vid);
    const PortMemory& settings = memory.port[port];
    const int untagged = settings.tagged ? 0 : BRIDGE_VLAN_INFO_UNTAGGED;
    if (vid == settings.vid)
        return BRIDGE_VLAN_INFO_PVID | untagged;
    return IsSteeredInto(memory, port, vid) ? untagged : kNotMember;
}

}  // namespace linux_switch
