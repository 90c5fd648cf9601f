// Interfaces that went away and came back: each has a new index, and none of its settings.
#include <errno.h>

#include "hals/linux_switch/ethtool.h"
#include "hals/linux_switch/log.h"
#include "hals/linux_switch/session.h"

namespace linux_switch {

void Session::ReviveReturned()
{
    if (memory_.index != 0 && bridge_.index != memory_.index)
        ReviveBridge();
    for (int port = 0; port < memory_.ports; ++port) {
        const uint32_t last = memory_.port[port].index;
        if (memory_.port[port].name[0] != '\0' && last != 0 && links_[port] &&
            links_[port].index != last)
            Revive(port);
    }
}

int Session::PutBridgeBack()
{
    const BridgeSettings settings = {.spanningTree = false,
                                     .snooping = memory_.snooping != 0,
                                     .filtering = true,
                                     .tpid = memory_.tpid,
                                     .ageing = memory_.ageing * kSecond};
    memory_.filtering = bridge_.filters ? 1 : 0;
    return PutSettings(route_, bridge_, settings);
}

// All ports have lost their places in it.
void Session::ReviveBridge()
{
    SwitchMemory before = memory_;
    ClearSettings(before);
    int error = PutBridgeBack();
    for (int port = 0; port < memory_.ports && error == 0; ++port) {
        if (memory_.port[port].name[0] != '\0' && links_[port])
            error = TakeIn(port);
    }
    if (error == 0)
        error = Apply(before, memory_);
    if (error == 0)
        error = SetUp(route_, bridge_.index,
                      !memory_.CpuIsBridge() || memory_.port[memory_.cpuPort].enabled);
    if (error != 0) {
        Refuse("bring back", memory_.bridge, error);
        return;
    }
    memory_.index = bridge_.index;
    if (memory_.CpuIsBridge())
        memory_.port[memory_.cpuPort].index = bridge_.index;
    if (Remember())
        LS_NOTICE("%s is back, DevIdx=%d", memory_.bridge, devIdx_);
}

int Session::TakeIn(int port)
{
    const Link& link = links_[port];
    if (link.master == bridge_.index)
        return 0;
    if (memory_.onReset != OnReset::kBuild || link.master != 0)
        return EBUSY;
    return SetMaster(route_, link.index, bridge_.index);
}

// What is the interface's own, not the bridge's.
int Session::PutDriverSettings(int port)
{
    PortMemory& settings = memory_.port[port];
    const Link& link = links_[port];
    if (memory_.mtu != 0 && memory_.mtu != link.mtu) {
        settings.mtuBefore = MtuOf(link);
        if (const int error = SetMtu(route_, link.index, memory_.mtu))
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
    const char* name = memory_.port[port].name;
    SwitchMemory before = memory_;
    ClearSettings(before, port);
    for (Steering& steering : before.steering) {
        if (steering.port == port)
            steering.used = 0;
    }
    before.port[port].ownsHook = memory_.port[port].ownsHook = 0;
    int error = TakeIn(port);
    if (error == 0)
        error = PutDriverSettings(port);
    if (error == 0)
        error = Apply(before, memory_);
    if (error == 0)
        error = PutFiltersThatName(port);
    if (error == 0)
        error = SetUp(route_, links_[port].index, memory_.port[port].enabled);
    if (error != 0) {
        Refuse("bring back", name, error);
        return;
    }
    memory_.port[port].index = links_[port].index;
    if (Remember())
        LS_NOTICE("%s is back, port %d, DevIdx=%d", name, port, devIdx_);
}

// Filters of other ports that meant the interface that went away.
int Session::PutFiltersThatName(int port)
{
    for (int other = 0; other < memory_.ports; ++other) {
        if (other == port || !links_[other])
            continue;
        const FilterList list = FiltersOf(memory_, other, links_);
        for (int i = 0; i < list.count; ++i) {
            if (list.filter[i].other != links_[port].index)
                continue;
            DeleteFilter(route_, links_[other].index, list.filter[i]);  // it may be gone already
            if (const int error = Put(other, list.filter[i]))
                return error;
        }
    }
    return 0;
}

}  // namespace linux_switch
