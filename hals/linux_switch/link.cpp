#include "hals/linux_switch/link.h"

#include <arpa/inet.h>
#include <errno.h>
#include <linux/if.h>
#include <linux/if_bridge.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace linux_switch {
namespace {

ifinfomsg Of(uint32_t index, uint8_t family = AF_UNSPEC)
{
    ifinfomsg header{};
    header.ifi_family = family;
    header.ifi_index = static_cast<int>(index);
    return header;
}

void ReadBridge(const Attribute& info, Link& link)
{
    const Attributes parts{info};
    const Attribute kind = parts.Find(IFLA_INFO_KIND);
    link.isBridge = kind && kind.IsText("bridge");
    const Attributes settings{parts.Find(IFLA_INFO_DATA)};
    // The setting of the filtering itself is shown by every kernel.
    link.filters = link.isBridge && settings.Find(IFLA_BR_VLAN_PROTOCOL);
    link.snoops = link.isBridge && settings.Find(IFLA_BR_MCAST_SNOOPING);
    link.settings = {settings.Find(IFLA_BR_STP_STATE).As<uint32_t>() != 0,
                     settings.Find(IFLA_BR_MCAST_SNOOPING).As<uint8_t>() != 0,
                     settings.Find(IFLA_BR_VLAN_FILTERING).As<uint8_t>() != 0,
                     ntohs(settings.Find(IFLA_BR_VLAN_PROTOCOL).As<uint16_t>()),
                     settings.Find(IFLA_BR_AGEING_TIME).As<uint32_t>()};
}

PortFlags ReadFlags(const Attribute& info)
{
    const Attributes settings{Attributes(info).Find(IFLA_INFO_SLAVE_DATA)};
    PortFlags flags = FlagsAtFirst();
    size_t i = 0;
    for (const PortFlag& flag : kPortFlags) {
        if (const Attribute found = settings.Find(flag.setting))
            flags.value[i] = found.As<uint8_t>();
        ++i;
    }
    return flags;
}

bool ReadLink(const Reply& reply, const char* name, Link& link)
{
    ifinfomsg header;
    if (reply.Type() != RTM_NEWLINK || !reply.Header(header))
        return false;
    const Attributes attributes = reply.Behind(sizeof header);
    const Attribute found = attributes.Find(IFLA_IFNAME);
    if (!found || !found.IsText(name))
        return false;
    link.index = static_cast<uint32_t>(header.ifi_index);
    link.up = (header.ifi_flags & IFF_UP) != 0;
    link.carrier = (header.ifi_flags & IFF_LOWER_UP) != 0;
    link.master = attributes.Find(IFLA_MASTER).As<uint32_t>();
    link.mtu = attributes.Find(IFLA_MTU).As<uint32_t>();
    link.offloads = static_cast<bool>(attributes.Find(IFLA_PHYS_SWITCH_ID));
    const Attribute info = attributes.Find(IFLA_LINKINFO);
    ReadBridge(info, link);
    link.flags = ReadFlags(info);
    return true;
}

int AskForLink(Netlink& netlink, const char* name, uint32_t index, Link& link)
{
    Request request(RTM_GETLINK, 0);
    request.Header(Of(index));
    if (index == 0)
        request.PutText(IFLA_IFNAME, name);
    request.Put<uint32_t>(IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    bool found = false;
    const int error = netlink.Ask(
        request, [&](const Reply& reply) { found = ReadLink(reply, name, link) || found; });
    if (error != 0)
        return error;
    return found ? 0 : ENODEV;
}

// A change of one attribute of an interface.
template <typename T>
int SetLink(Netlink& netlink, uint32_t index, uint16_t attribute, T value)
{
    Request request(RTM_SETLINK, 0);
    request.Header(Of(index));
    request.Put<T>(attribute, value);
    return netlink.Do(request);
}

int ChangeVlans(Netlink& netlink, uint16_t type, const VlanMember& member,
                const bridge_vlan_info* infos, size_t count)
{
    Request request(type, 0);
    request.Header(Of(member.index, AF_BRIDGE));
    const size_t nest = request.Open(IFLA_AF_SPEC);
    if (member.isBridge)
        request.Put<uint16_t>(IFLA_BRIDGE_FLAGS, BRIDGE_FLAGS_SELF);
    for (size_t i = 0; i < count; ++i)
        request.Put(IFLA_BRIDGE_VLAN_INFO, infos[i]);
    request.Close(nest);
    return netlink.Do(request);
}

}  // namespace

PortFlags FlagsAtFirst()
{
    PortFlags flags{};
    size_t i = 0;
    for (const PortFlag& flag : kPortFlags)
        flags.value[i++] = flag.atFirst;
    return flags;
}

int FindLink(Netlink& netlink, const char* name, uint32_t lastIndex, Link& link)
{
    link = {};
    if (lastIndex != 0) {
        const int error = AskForLink(netlink, name, lastIndex, link);
        if (error != ENODEV)
            return error;
    }
    return AskForLink(netlink, name, 0, link);
}

int ReadStatistics(Netlink& netlink, uint32_t index, rtnl_link_stats64& statistics)
{
    Request request(RTM_GETLINK, 0);
    request.Header(Of(index));
    bool found = false;
    const int error = netlink.Ask(request, [&](const Reply& reply) {
        const Attribute values = reply.Behind(sizeof(ifinfomsg)).Find(IFLA_STATS64);
        statistics = values.As<rtnl_link_stats64>();
        found = found || values;
    });
    if (error != 0)
        return error;
    return found ? 0 : EOPNOTSUPP;
}

int MakeBridge(Netlink& netlink, const char* name)
{
    Request request(RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL);
    request.Header(Of(0));
    request.PutText(IFLA_IFNAME, name);
    const size_t info = request.Open(IFLA_LINKINFO);
    request.PutText(IFLA_INFO_KIND, "bridge");
    request.Close(info);
    return netlink.Do(request);
}

int DeleteLink(Netlink& netlink, const char* name)
{
    Request request(RTM_DELLINK, 0);
    request.Header(Of(0));
    request.PutText(IFLA_IFNAME, name);
    return netlink.Do(request);
}

int SetMaster(Netlink& netlink, uint32_t index, uint32_t master)
{
    return SetLink(netlink, index, IFLA_MASTER, master);
}

int SetUp(Netlink& netlink, uint32_t index, bool up)
{
    ifinfomsg header = Of(index);
    header.ifi_change = IFF_UP;
    header.ifi_flags = up ? IFF_UP : 0;
    Request request(RTM_SETLINK, 0);
    request.Header(header);
    return netlink.Do(request);
}

int SetMtu(Netlink& netlink, uint32_t index, uint32_t mtu)
{
    return SetLink(netlink, index, IFLA_MTU, mtu);
}

int PutSettings(Netlink& netlink, const Link& bridge, const BridgeSettings& settings)
{
    Request request(RTM_NEWLINK, 0);
    request.Header(Of(bridge.index));
    const size_t info = request.Open(IFLA_LINKINFO);
    request.PutText(IFLA_INFO_KIND, "bridge");
    const size_t data = request.Open(IFLA_INFO_DATA);
    request.Put<uint32_t>(IFLA_BR_STP_STATE, settings.spanningTree);
    request.Put<uint32_t>(IFLA_BR_AGEING_TIME, settings.ageing);
    if (bridge.snoops)
        request.Put<uint8_t>(IFLA_BR_MCAST_SNOOPING, settings.snooping);
    if (bridge.filters) {
        request.Put<uint16_t>(IFLA_BR_VLAN_PROTOCOL, htons(settings.tpid));
        request.Put<uint8_t>(IFLA_BR_VLAN_FILTERING, settings.filtering);
    }
    request.Close(data);
    request.Close(info);
    return netlink.Do(request);
}

template <typename T>
int SetBridge(Netlink& netlink, uint32_t index, uint16_t setting, T value)
{
    Request request(RTM_NEWLINK, 0);
    request.Header(Of(index));
    const size_t info = request.Open(IFLA_LINKINFO);
    request.PutText(IFLA_INFO_KIND, "bridge");
    const size_t data = request.Open(IFLA_INFO_DATA);
    request.Put<T>(setting, value);
    request.Close(data);
    request.Close(info);
    return netlink.Do(request);
}

template int SetBridge<uint8_t>(Netlink&, uint32_t, uint16_t, uint8_t);
template int SetBridge<uint16_t>(Netlink&, uint32_t, uint16_t, uint16_t);
template int SetBridge<uint32_t>(Netlink&, uint32_t, uint16_t, uint32_t);

int SetBridgePort(Netlink& netlink, uint32_t index, uint16_t setting, uint8_t value)
{
    Request request(RTM_SETLINK, 0);
    request.Header(Of(index, AF_BRIDGE));
    const size_t nest = request.Open(IFLA_PROTINFO | NLA_F_NESTED);
    request.Put<uint8_t>(setting, value);
    request.Close(nest);
    return netlink.Do(request);
}

int PutFlags(Netlink& netlink, uint32_t index, const PortFlags& flags)
{
    Request request(RTM_SETLINK, 0);
    request.Header(Of(index, AF_BRIDGE));
    const size_t nest = request.Open(IFLA_PROTINFO | NLA_F_NESTED);
    size_t i = 0;
    for (const PortFlag& flag : kPortFlags)
        request.Put<uint8_t>(flag.setting, flags.value[i++]);
    request.Close(nest);
    int error = netlink.Do(request);
    if (error != EOPNOTSUPP)
        return error;
    // The driver has not got all of them.
    i = 0;
    for (const PortFlag& flag : kPortFlags) {
        error = SetBridgePort(netlink, index, flag.setting, flags.value[i++]);
        if (error != 0 && error != EOPNOTSUPP)
            return error;
    }
    return 0;
}

int AddVlan(Netlink& netlink, const VlanMember& member, uint16_t vid, uint16_t flags)
{
    const bridge_vlan_info info = {flags, vid};
    return ChangeVlans(netlink, RTM_SETLINK, member, &info, 1);
}

int DeleteVlans(Netlink& netlink, const VlanMember& member, uint16_t first, uint16_t last)
{
    const bridge_vlan_info infos[] = {
        {first == last ? uint16_t{0} : uint16_t{BRIDGE_VLAN_INFO_RANGE_BEGIN}, first},
        {BRIDGE_VLAN_INFO_RANGE_END, last}};
    return ChangeVlans(netlink, RTM_DELLINK, member, infos, first == last ? 1 : 2);
}

}  // namespace linux_switch
