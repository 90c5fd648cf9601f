// Interfaces that went away and came back: each has a new index, and none of its settings.
#include <errno.h>

#include "hals/linux_switch/ethtool.h"
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/session.h"

namespace linux_switch {

void Session::ReviveReturned()
{
    if (memory.index != 0 && bridge.index != memory.index)
        ReviveBridge();
    for (int port = 0; port < memory.ports; ++port) {
        const uint32_t last = memory.port[port].index;
        if (memory.port[port].name[0] != '\0' && last != 0 && links[port] &&
            links[port].index != last)
            Revive(port);
    }
}

int Session::PutBridgeBack()
{
    const BridgeSettings settings = {.spanningTree = false,
                                     .snooping = memory.snooping != 0,
                                     .filtering = true,
                                     .tpid = memory.tpid,
                                     .ageing = memory.ageing * kSecond};
    memory.filtering = bridge.filters ? 1 : 0;
    return PutSettings(route, bridge, settings);
}

// All ports have lost their places in it.
void Session::ReviveBridge()
{
    SwitchMemory before = memory;
    ClearSettings(before);
    int error = PutBridgeBack();
    for (int port = 0; port < memory.ports && error == 0; ++port) {
        if (memory.port[port].name[0] != '\0' && links[port])
            error = TakeIn(port);
    }
    if (error == 0)
        error = Apply(before, memory);
    if (error == 0)
        error = SetUp(route, bridge.index,
                      !memory.CpuIsBridge() || memory.port[memory.cpuPort].enabled);
    if (error != 0) {
        Refuse("bring back", memory.bridge, error);
        return;
    }
    memory.index = bridge.index;
    if (memory.CpuIsBridge())
        memory.port[memory.cpuPort].index = bridge.index;
    if (Remember())
        LS_NOTICE("%s is back, DevIdx=%d", memory.bridge, devIdx);
}

int Session::TakeIn(int port)
{
    const Link& link = links[port];
    if (link.master == bridge.index)
        return 0;
    if (memory.onReset != OnReset::kBuild || link.master != 0)
        return EBUSY;
    return SetMaster(route, link.index, bridge.index);
}

// What is the interface's own, not the bridge's.
int Session::PutDriverSettings(int port)
{
    PortMemory& settings = memory.port[port];
    const Link& link = links[port];
    if (memory.mtu != 0 && memory.mtu != link.mtu) {
        settings.mtuBefore = MtuOf(link);
        if (const int error = SetMtu(route, link.index, memory.mtu))
            return error;
    }
    if (settings.megabits == 0 && settings.eee == Switched::kNever)
        return 0;
    Ethtool ethtool;
    if (settings.megabits != 0) {
        const LinkMode forced = {settings.megabits, settings.fullDuplex != 0, false, false};
        if (const int error = ethtool.SetMode(link.index, forced))
            return error;
    }
    if (settings.eee == Switched::kNever)
        return 0;
    const int error = ethtool.SetEee(link.index, settings.eee == Switched::kOn);
    return error == EOPNOTSUPP ? 0 : error;
}

void Session::Revive(int port)
{
    const char* name = memory.port[port].name;
    SwitchMemory before = memory;
    ClearSettings(before, port);
    for (Steering& steering : before.steering) {
        if (steering.port == port)
            steering.used = 0;
    }
    before.port[port].ownsHook = memory.port[port].ownsHook = 0;
    int error = TakeIn(port);
    if (error == 0)
        error = PutDriverSettings(port);
    if (error == 0)
        error = Apply(before, memory);
    if (error == 0)
        error = PutFiltersThatName(port);
    if (error == 0)
        error = SetUp(route, links[port].index, memory.port[port].enabled);
    if (error != 0) {
        Refuse("bring back", name, error);
        return;
    }
    memory.port[port].index = links[port].index;
    if (Remember())
        LS_NOTICE("%s is back, port %d, DevIdx=%d", name, port, devIdx);
}

// Filters of other ports that meant the interface that went away.
int Session::PutFiltersThatName(int port)
{
    for (int other = 0; other < memory.ports; ++other) {
        if (other == port || !links[other])
            continue;
        const FilterList list = FiltersOf(memory, other, links);
        for (int i = 0; i < list.count; ++i) {
            if (list.filter[i].other != links[port].index)
                continue;
            DeleteFilter(route, links[other].index, list.filter[i]);  // it may be gone already
            if (const int error = Put(other, list.filter[i]))
                return error;
        }
    }
    return 0;
}

}  // namespace linux_switch
