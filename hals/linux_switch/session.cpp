#include "hals/linux_switch/session.h"

#include <arpa/inet.h>
#include <errno.h>
#include <linux/if_ether.h>

#include "hals/linux_switch/log.h"
#include "hals/linux_switch/vlan_plan.h"

namespace linux_switch {
namespace {

const char* WordsFor(int error)
{
    switch (error) {
        case ENODEV:
            return "there is no such interface";
        case EPERM:
        case EACCES:
            return "not permitted, it takes CAP_NET_ADMIN";
        case EOPNOTSUPP:
        case EAFNOSUPPORT:
            return "this kernel or driver has not got it";
        case ENOENT:
            return "this kernel lacks a part of it";
        case EBUSY:
            return "it belongs to something else";
        case EAGAIN:
            return "it has changed each time it was read";
        case ETIMEDOUT:
            return "the kernel has not answered";
        case EINVAL:
            return "the kernel does not take that value";
        default:
            return "the kernel refused";
    }
}

}  // namespace

int Refuse(int devIdx, const char* what, const char* interface, int error, const char* reason)
{
    LS_ERROR("Cannot %s %s, DevIdx=%d: %s, errno=%d%s%s", what, interface, devIdx, WordsFor(error),
             error, reason[0] ? ". " : "", reason);
    return -1;
}

Session::Session(int deviceIndex) : devIdx_(deviceIndex) {}

bool Session::Recall()
{
    return linux_switch::Recall(devIdx_, memory_);
}

bool Session::Remember()
{
    return linux_switch::Remember(devIdx_, memory_);
}

// ENODEV for one that is not there is no error here: the index says it.
int Session::FindAll()
{
    int error = FindLink(route_, memory_.bridge, memory_.index, bridge_);
    for (int port = 0; port < memory_.ports && (error == 0 || error == ENODEV); ++port) {
        const PortMemory& mapped = memory_.port[port];
        if (mapped.name[0] == '\0') {
            links_[port] = bridge_;
            continue;
        }
        error = FindLink(route_, mapped.name, mapped.index, links_[port]);
    }
    return error == ENODEV ? 0 : error;
}

bool Session::Meet()
{
    if (!Recall())
        return false;
    const int error = FindAll();
    if (error != 0 || !bridge_) {
        Refuse("use the bridge", memory_.bridge, error != 0 ? error : ENODEV);
        return false;
    }
    ReviveReturned();
    return true;
}

bool Session::MeetPort(int port)
{
    if (!Meet())
        return false;
    if (!memory_.IsPort(port)) {
        LS_ERROR("Invalid port %d, DevIdx=%d", port, devIdx_);
        return false;
    }
    if (!links_[port])
        Refuse("use port interface", memory_.port[port].name, ENODEV);
    return static_cast<bool>(links_[port]);
}

VlanMember Session::Member(int port) const
{
    return {links_[port].index, memory_.port[port].name[0] == '\0'};
}

int Session::PutVlans(const SwitchMemory& from, const SwitchMemory& to, int port)
{
    const VidList wanted = VidsOf(to, port);
    for (int i = 0; i < wanted.count; ++i) {
        const int flags = FlagsIn(to, port, wanted.vid[i]);
        if (flags == kNotMember || flags == FlagsIn(from, port, wanted.vid[i]))
            continue;
        if (!memory_.filtering)
            return EOPNOTSUPP;
        const int error =
            AddVlan(route_, Member(port), wanted.vid[i], static_cast<uint16_t>(flags));
        if (error != 0)
            return error;
    }
    return 0;
}

int Session::DropVlans(const SwitchMemory& from, const SwitchMemory& to, int port)
{
    const VidList before = VidsOf(from, port);
    for (int i = 0; i < before.count; ++i) {
        const uint16_t vid = before.vid[i];
        if (FlagsIn(from, port, vid) == kNotMember || FlagsIn(to, port, vid) != kNotMember)
            continue;
        if (const int error = DeleteVlans(route_, Member(port), vid, vid))
            return error;
    }
    return 0;
}

int Session::Hook(int port)
{
    const int error = MakeHook(route_, links_[port].index);
    if (error == 0)
        memory_.port[port].ownsHook = 1;
    return error == EEXIST ? 0 : error;
}

int Session::PutFilters(const SwitchMemory& from, const SwitchMemory& to, int port)
{
    const FilterList before = FiltersOf(from, port, links_);
    const FilterList wanted = FiltersOf(to, port, links_);
    for (int i = 0; i < wanted.count; ++i) {
        const Filter& filter = wanted.filter[i];
        const Filter* old = before.At(filter);
        if (old && *old == filter)
            continue;
        if (const int error = Put(port, filter))
            return error;
    }
    return 0;
}

int Session::Put(int port, const Filter& filter)
{
    const uint32_t index = links_[port].index;
    if (const int error = Hook(port))
        return error;
    const int error = PutFilter(route_, index, filter);
    if (error != EEXIST)
        return error;
    // A kind that the kernel does not replace.
    const int deleted = DeleteFilter(route_, index, filter);
    return deleted != 0 ? deleted : PutFilter(route_, index, filter);
}

int Session::DropFilters(const SwitchMemory& from, const SwitchMemory& to, int port)
{
    const FilterList before = FiltersOf(from, port, links_);
    const FilterList wanted = FiltersOf(to, port, links_);
    for (int i = 0; i < before.count; ++i) {
        if (wanted.At(before.filter[i]))
            continue;
        const int error = DeleteFilter(route_, links_[port].index, before.filter[i]);
        if (error != 0 && error != ENOENT && error != EINVAL)  // EINVAL: there is no hook
            return error;
    }
    if (wanted.count == 0 && before.count != 0 && memory_.port[port].ownsHook) {
        if (const int error = DeleteIdleHook(route_, links_[port].index))
            return error;
        memory_.port[port].ownsHook = 0;
    }
    return 0;
}

int Session::SetIsolation(const SwitchMemory& from, const SwitchMemory& to, int port)
{
    const bool wanted = AreAllApart(to);
    if (!memory_.IsLanPort(port) || wanted == AreAllApart(from))
        return 0;
    return SetBridgePort(route_, links_[port].index, IFLA_BRPORT_ISOLATED, wanted ? 1 : 0);
}

// What is added comes first and what is taken away last, so that nothing leaks in between.
int Session::Apply(const SwitchMemory& from, const SwitchMemory& to)
{
    using Step = int (Session::*)(const SwitchMemory&, const SwitchMemory&, int);
    const Step steps[] = {&Session::PutVlans, &Session::PutFilters, &Session::SetIsolation,
                          &Session::DropFilters, &Session::DropVlans};
    if (from.tpid != to.tpid) {
        if (const int error =
                SetBridge<uint16_t>(route_, bridge_.index, IFLA_BR_VLAN_PROTOCOL, htons(to.tpid)))
            return error;
    }
    for (const Step step : steps) {
        for (int port = 0; port < memory_.ports; ++port) {
            const int error = links_[port] ? (this->*step)(from, to, port) : 0;
            if (error != 0 && !undoing_)
                return error;
        }
    }
    return 0;
}

int Session::Start(uint8_t isolation)
{
    ClearSettings(memory_);
    memory_.filtering = bridge_.filters ? 1 : 0;
    memory_.index = bridge_.index;
    for (int port = 0; port < memory_.ports; ++port) {
        memory_.port[port].index = links_[port].index;
        memory_.port[port].mtuBefore = 0;
        if (!memory_.port[port].ownsHook)
            continue;
        if (const int error = DeleteIdleHook(route_, links_[port].index))
            return error;
        memory_.port[port].ownsHook = 0;
    }
    const SwitchMemory before = memory_;
    memory_.isolation = isolation;
    return Apply(before, memory_);
}

int Session::Keep(const SwitchMemory& wanted)
{
    memory_ = wanted;
    return Remember() ? 0 : -1;
}

void Session::PutBack(const SwitchMemory& before)
{
    SwitchMemory cleared = before;
    ClearSettings(cleared);
    memory_ = before;
    undoing_ = true;
    Apply(cleared, before);  // result dropped: there is nothing else to fall back to
    undoing_ = false;
}

int Session::Settle(const char* what, const char* interface, const SwitchMemory& wanted)
{
    const SwitchMemory before = memory_;
    if (wanted.tpid != before.tpid && !memory_.filtering)
        return Refuse(what, interface, EOPNOTSUPP);
    if (const int error = Apply(before, wanted)) {
        Refuse(what, interface, error);
        undoing_ = true;
        Apply(wanted, before);  // result dropped: what was not there yet cannot be taken away
        undoing_ = false;
        Remember();  // whose the hooks are
        return -1;
    }
    SwitchMemory settled = wanted;
    for (int port = 0; port < kPorts; ++port)
        settled.port[port].ownsHook = memory_.port[port].ownsHook;
    return Keep(settled);
}

}  // namespace linux_switch
