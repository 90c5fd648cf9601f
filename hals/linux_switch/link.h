// Interfaces, bridges and their ports, by rtnetlink. Functions that change something give 0 or an
// error number.
#pragma once

#include <linux/if_link.h>

#include "hals/linux_switch/netlink.h"

namespace linux_switch {

constexpr uint32_t kSecond = 100;  // in the units of a bridge's times

// What a bridge as a whole is set to.
struct BridgeSettings {
    bool spanningTree = false;
    bool snooping = false;
    bool filtering = false;
    uint16_t tpid = 0;
    uint32_t ageing = 0;
};

// Settings of a bridge's port that are yes or no, and what they are in a port that is new.
struct PortFlag {
    uint16_t setting;  // IFLA_BRPORT_...
    uint8_t atFirst;
};
constexpr uint16_t kLockedPort = 39;  // IFLA_BRPORT_LOCKED, which headers have since Linux 5.18
constexpr PortFlag kPortFlags[] = {
    {IFLA_BRPORT_MODE, 0},
    {IFLA_BRPORT_GUARD, 0},
    {IFLA_BRPORT_PROTECT, 0},
    {IFLA_BRPORT_FAST_LEAVE, 0},
    {IFLA_BRPORT_LEARNING, 1},
    {IFLA_BRPORT_UNICAST_FLOOD, 1},
    {IFLA_BRPORT_MCAST_FLOOD, 1},
    {IFLA_BRPORT_BCAST_FLOOD, 1},
    {IFLA_BRPORT_PROXYARP, 0},
    {IFLA_BRPORT_PROXYARP_WIFI, 0},
    {IFLA_BRPORT_MCAST_TO_UCAST, 0},
    {IFLA_BRPORT_VLAN_TUNNEL, 0},
    {IFLA_BRPORT_NEIGH_SUPPRESS, 0},
    {IFLA_BRPORT_ISOLATED, 0},
    {kLockedPort, 0},
};

// A value for each of them.
struct PortFlags {
    uint8_t value[sizeof kPortFlags / sizeof *kPortFlags];
};
PortFlags FlagsAtFirst();

struct Link {
    uint32_t index = 0;   // 0: there is none of that name
    uint32_t master = 0;  // index of what it is a port of; 0: of nothing
    uint32_t mtu = 0;
    bool up = false;
    bool carrier = false;
    bool offloads = false;  // a switch chip forwards for it
    bool isBridge = false;
    bool filters = false;  // a bridge of a kernel that has VLAN filtering
    bool snoops = false;   // a bridge of a kernel that has snooping
    BridgeSettings settings;
    PortFlags flags{};

    explicit operator bool() const { return index != 0; }
};

// As it is remembered.
inline uint16_t MtuOf(const Link& link)
{
    return static_cast<uint16_t>(link.mtu < UINT16_MAX ? link.mtu : UINT16_MAX);
}

// Looks for an interface where it was last met, and by its name if it is not there any more.
int FindLink(Netlink& netlink, const char* name, uint32_t lastIndex, Link& link);

// The counters that the kernel keeps of every interface.
int ReadStatistics(Netlink& netlink, uint32_t index, rtnl_link_stats64& statistics);

int MakeBridge(Netlink& netlink, const char* name);
int DeleteLink(Netlink& netlink, const char* name);
int SetMaster(Netlink& netlink, uint32_t index, uint32_t master);
int SetUp(Netlink& netlink, uint32_t index, bool up);
int SetMtu(Netlink& netlink, uint32_t index, uint32_t mtu);

int PutSettings(Netlink& netlink, const Link& bridge, const BridgeSettings& settings);
// What the kernel or a driver has not got is left out.
int PutFlags(Netlink& netlink, uint32_t index, const PortFlags& flags);

// One of the bridge's own settings, IFLA_BR_...
template <typename T>
int SetBridge(Netlink& netlink, uint32_t index, uint16_t setting, T value);
// One of a bridge port's, IFLA_BRPORT_...
int SetBridgePort(Netlink& netlink, uint32_t index, uint16_t setting, uint8_t value);

// VLANs of a bridge port, or of the bridge itself.
struct VlanMember {
    uint32_t index;
    bool isBridge;
};
int AddVlan(Netlink& netlink, const VlanMember& member, uint16_t vid, uint16_t flags);
int DeleteVlans(Netlink& netlink, const VlanMember& member, uint16_t first, uint16_t last);

}  // namespace linux_switch
