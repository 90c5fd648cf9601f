// VLANs, groups, priorities and provider bridging.
#include <errno.h>
#include <linux/if_ether.h>
#include <string.h>

#include "hals/linux_switch/log.h"
#include "hals/linux_switch/session.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

constexpr int kMaxVid = 4094;
constexpr int kMaxPcp = 7;

bool IsVid(int vid)
{
    return vid >= 1 && vid <= kMaxVid;
}

int Invalid(int devIdx, const char* what, int value)
{
    LS_ERROR("Invalid %s %d, DevIdx=%d", what, value, devIdx);
    return -1;
}

bool MeetLanPort(Session& session, int devIdx, int port)
{
    if (!session.MeetPort(port))
        return false;
    const SwitchMemory& memory = session.Memory();
    if (!memory.IsLanPort(port)) {
        Invalid(devIdx, "LAN port", port);
        return false;
    }
    if (session.Port(port).master == session.Bridge().index)
        return true;
    session.Refuse("use port interface, which is not in the bridge,", memory.NameOf(port), EBUSY);
    return false;
}

// A change of one member of a LAN port's settings.
template <typename T>
int SetMember(int devIdx, int port, T PortMemory::*member, T value, const char* what)
{
    Session session(devIdx);
    if (!MeetLanPort(session, devIdx, port))
        return -1;
    SwitchMemory wanted = session.Memory();
    wanted.port[port].*member = value;
    return session.Settle(what, wanted.port[port].name, wanted);
}

int SetTpid(int devIdx, uint16_t tpid)
{
    Session session(devIdx);
    if (!session.Meet())
        return -1;
    SwitchMemory wanted = session.Memory();
    wanted.tpid = tpid;
    return session.Settle("set the protocol of the tags of", wanted.bridge, wanted);
}

bool IsStation(const Steering& steering, int port, const uint8_t* mac, uint16_t mask)
{
    return steering.used && steering.port == port && steering.mask == mask &&
           memcmp(steering.mac, mac, sizeof steering.mac) == 0;
}

// The entry of a station, or a free one; null when there is neither.
Steering* EntryFor(SwitchMemory& memory, int port, const uint8_t* mac, uint16_t mask)
{
    Steering* free = nullptr;
    for (Steering& steering : memory.steering) {
        if (IsStation(steering, port, mac, mask))
            return &steering;
        if (!steering.used && !free)
            free = &steering;
    }
    return free;
}

}  // namespace

int EnableProviderBridgedMode(int devIdx, int tpid)
{
    if (tpid != ETH_P_8021AD && tpid != ETH_P_8021Q) {
        LS_ERROR("A bridge has no tags of 0x%x, only 0x88a8 and 0x8100, DevIdx=%d", tpid, devIdx);
        return -1;
    }
    return SetTpid(devIdx, static_cast<uint16_t>(tpid));
}

int DisableProviderBridgedMode(int devIdx)
{
    return SetTpid(devIdx, ETH_P_8021Q);
}

int SetLanPortVlan(int devIdx, int port, int vid)
{
    if (!IsVid(vid))
        return Invalid(devIdx, "VLAN", vid);
    return SetMember(devIdx, port, &PortMemory::vid, static_cast<uint16_t>(vid), "set the VLAN of");
}

int SetLanPortEgressTagging(int devIdx, int port, uint32_t enable)
{
    return SetMember(devIdx, port, &PortMemory::tagged, static_cast<uint8_t>(enable != 0),
                     "set the tagging of");
}

int SetLanPortGroupId(int devIdx, int port, uint32_t group)
{
    return SetMember(devIdx, port, &PortMemory::group, group, "set the group of");
}

int SetLanPortPcp(int devIdx, int port, int pcp)
{
    if (pcp < 0 || pcp > kMaxPcp)
        return Invalid(devIdx, "priority", pcp);
    return SetMember(devIdx, port, &PortMemory::pcp, static_cast<uint8_t>(pcp),
                     "set the priority of");
}

int MapSetMacToVlan(int devIdx, int port, const uint8_t* mac, int mask, int vid, int enable)
{
    if (!mac || (enable && !IsVid(vid)))
        return Invalid(devIdx, "VLAN", vid);
    Session session(devIdx);
    if (!MeetLanPort(session, devIdx, port))
        return -1;
    const auto nibbles = static_cast<uint16_t>(mask & 0xFFF);
    SwitchMemory wanted = session.Memory();
    Steering* entry = EntryFor(wanted, port, mac, nibbles);
    if (enable && !entry)
        return session.Refuse("map another station of", wanted.port[port].name, ENOSPC);
    if (!enable && !entry)
        return 0;
    const bool known = IsStation(*entry, port, mac, nibbles);
    if (!enable && !known)
        return 0;
    memcpy(entry->mac, mac, sizeof entry->mac);
    entry->mask = nibbles;
    entry->vid = static_cast<uint16_t>(enable ? vid : entry->vid);
    entry->port = static_cast<uint8_t>(port);
    entry->used = enable ? 1 : 0;
    return session.Settle("map a station of", wanted.port[port].name, wanted);
}

}  // namespace linux_switch
