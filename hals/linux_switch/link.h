// Interfaces, bridges and their ports, by rtnetlink. Functions that change something give 0 or an
// error number.
#pragma once

#include <linux/if_link.h>

#include "hals/linux_switch/netlink.h"

namespace linux_switch {

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

    explicit operator bool() const { return index != 0; }
};

// Looks for an interface where it was last met, and by its name if it is not there any more.
int FindLink(Netlink& netlink, const char* name, uint32_t lastIndex, Link& link);

// The counters that the kernel keeps of every interface.
int ReadStatistics(Netlink& netlink, uint32_t index, rtnl_link_stats64& statistics);

int MakeBridge(Netlink& netlink, const char* name);
int DeleteLink(Netlink& netlink, const char* name);
int SetMaster(Netlink& netlink, uint32_t index, uint32_t master);
int SetUp(Netlink& netlink, uint32_t index, bool up);
int SetMtu(Netlink& netlink, uint32_t index, uint32_t mtu);

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
