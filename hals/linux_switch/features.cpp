// Switch-wide features.
#include <errno.h>
#include <stdio.h>

#include "hals/linux_switch/log.h"
#include "hals/linux_switch/session.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

constexpr uint16_t kAgeing[] = {15, 75, 300, 1200, 4800};

// Header and frame check sequence, which an MTU of the kernel leaves out.
constexpr int kAroundMtu = 18;
constexpr int kLeastMtu = 68;
constexpr int kMostOctets = 10'240;

int SetSnooping(int devIdx, bool enabled)
{
    Session session(devIdx);
    if (!session.Meet())
        return -1;
    int error = EOPNOTSUPP;
    if (session.Bridge().snoops)
        error = SetBridge<uint8_t>(session.Route(), session.Bridge().index, IFLA_BR_MCAST_SNOOPING,
                                   enabled);
    if (error != 0)
        return session.Refuse("set the snooping of", session.Memory().bridge, error);
    SwitchMemory wanted = session.Memory();
    wanted.snooping = enabled ? 1 : 0;
    return session.Keep(wanted);
}

int SetPortMtu(Session& session, int port, SwitchMemory& wanted)
{
    const Link& link = session.Port(port);
    if (!link || link.mtu == wanted.mtu)
        return 0;
    if (wanted.port[port].mtuBefore == 0)
        wanted.port[port].mtuBefore = MtuOf(link);
    return SetMtu(session.Route(), link.index, wanted.mtu);
}

}  // namespace

int EnableIgmpSnooping(int devIdx)
{
    return SetSnooping(devIdx, true);
}

int DisableIgmpSnooping(int devIdx)
{
    return SetSnooping(devIdx, false);
}

int SetMacAging(int devIdx, int step)
{
    constexpr int kSteps = sizeof kAgeing / sizeof *kAgeing;
    if (step < 1 || step > kSteps) {
        LS_ERROR("Invalid ageing step %d, DevIdx=%d", step, devIdx);
        return -1;
    }
    Session session(devIdx);
    if (!session.Meet())
        return -1;
    const int error = SetBridge<uint32_t>(session.Route(), session.Bridge().index,
                                          IFLA_BR_AGEING_TIME, kAgeing[step - 1] * kSecond);
    if (error != 0)
        return session.Refuse("set the ageing of", session.Memory().bridge, error);
    SwitchMemory wanted = session.Memory();
    wanted.ageing = kAgeing[step - 1];
    return session.Keep(wanted);
}

int SetMtuSize(int devIdx, int octets)
{
    if (octets < kLeastMtu + kAroundMtu || octets > kMostOctets) {
        LS_ERROR("Invalid MTU %d, DevIdx=%d", octets, devIdx);
        return -1;
    }
    Session session(devIdx);
    if (!session.Meet())
        return -1;
    const SwitchMemory& memory = session.Memory();
    SwitchMemory wanted = memory;
    wanted.mtu = static_cast<uint16_t>(octets - kAroundMtu);
    // The bridge last: its own is bounded by that of its ports.
    for (int i = 1; i <= memory.ports; ++i) {
        const int port = (memory.cpuPort + i) % memory.ports;
        const int error = SetPortMtu(session, port, wanted);
        if (error == 0)
            continue;
        session.Refuse("set the MTU of", memory.NameOf(port), error);
        for (int undone = 1; undone < i; ++undone) {
            const int back = (memory.cpuPort + undone) % memory.ports;
            if (session.Port(back))
                SetMtu(session.Route(), session.Port(back).index, session.Port(back).mtu);
        }
        return -1;
    }
    return session.Keep(wanted);
}

int PrintMachineState(int devIdx)
{
    Session session(devIdx);
    if (!session.Meet())
        return -1;
    const SwitchMemory& memory = session.Memory();
    printf("Switch %d: bridge %s (%u), tags 0x%04x, VLAN filtering %s\n", devIdx, memory.bridge,
           session.Bridge().index, static_cast<unsigned>(memory.tpid),
           memory.filtering ? "on" : "not in this kernel");
    for (int port = 0; port < memory.ports; ++port) {
        const PortMemory& settings = memory.port[port];
        const Link& link = session.Port(port);
        printf("  port %d: %s (%u) %s, VLAN %u %s, priority %u, group %d, mirror %d%s\n", port,
               memory.NameOf(port), link.index,
               !link          ? "missing"
               : link.carrier ? "link"
               : link.up      ? "no link"
                              : "down",
               static_cast<unsigned>(settings.vid), settings.tagged ? "tagged" : "untagged",
               static_cast<unsigned>(settings.pcp), static_cast<int>(settings.group),
               settings.mirror == OB_NO_MIRROR ? -1 : settings.mirror,
               link.offloads ? ", forwarded by a chip" : "");
    }
    static_cast<void>(fflush(stdout));  // result dropped: a console that is gone misses nothing
    return 0;
}

}  // namespace linux_switch
