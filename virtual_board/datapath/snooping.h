// IGMP and MLD snooping: who has joined what, and where queriers are heard.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "virtual_board/chips/vs08/forwarding.h"
#include "virtual_board/datapath/membership.h"

namespace vboard::datapath {

// Every port of a switch.
constexpr vswitch::PortMask kEverywhere = 0xFF;

// Until when each port of a switch belongs to something.
using PortTimes = std::array<std::chrono::nanoseconds, vswitch::kPorts>;

vswitch::PortMask StillIn(const PortTimes& until, std::chrono::nanoseconds now);

// The members of multicast groups per VLAN. It has room for kGroups; one more is not taken up.
class GroupTable {
public:
    static constexpr size_t kGroups = 1024;

    GroupTable();
    void Clear();
    void Join(const GroupAddress& group, uint16_t vid, unsigned port, std::chrono::nanoseconds now);
    // It ends soon, unless somebody answers the query that follows a leave. False: the port was no
    // member.
    bool Leave(const GroupAddress& group, uint16_t vid, unsigned port,
               std::chrono::nanoseconds now);
    vswitch::PortMask Members(const GroupAddress& group, uint16_t vid,
                              std::chrono::nanoseconds now) const;

private:
    static constexpr int16_t kNone = -1;
    struct Entry {
        GroupAddress group;
        uint16_t vid;
        PortTimes until;
        int16_t next;
    };

    static size_t BucketOf(const GroupAddress& group, uint16_t vid);
    int16_t Find(const GroupAddress& group, uint16_t vid) const;
    int16_t Make(const GroupAddress& group, uint16_t vid, std::chrono::nanoseconds now);
    void DropEnded(std::chrono::nanoseconds now);

    std::vector<Entry> entries_;
    std::array<int16_t, kGroups> first_;
    int16_t free_;
};

class Snooping {
public:
    Snooping();
    void Forget(Protocol protocol);

    // Takes note of a packet in a VLAN.
    void Follow(const MulticastPacket& packet, unsigned port, uint16_t vid,
                std::chrono::nanoseconds now);
    // The groups that members of a VLAN without a querier have left in the packet followed last.
    std::span<const GroupAddress> Left() const { return {left_.data(), leftCount_}; }
    // Where it may go after that.
    vswitch::PortMask Destinations(const MulticastPacket& packet, uint16_t vid,
                                   unsigned internalPort, std::chrono::nanoseconds now) const;

private:
    struct Family {
        GroupTable groups;
        std::vector<PortTimes> queriers;  // by VLAN id
        std::vector<PortTimes> routers;   // likewise, heard of by their hellos
        bool empty = true;
    };
    Family& Of(Protocol protocol) { return families_[static_cast<size_t>(protocol)]; }
    const Family& Of(Protocol protocol) const { return families_[static_cast<size_t>(protocol)]; }
    void Note(Family& family, const MulticastPacket& report, unsigned port, uint16_t vid,
              std::chrono::nanoseconds now);

    // One report that leaves more asks for these only.
    static constexpr size_t kMostLeft = 16;

    std::array<Family, 2> families_;
    std::array<GroupAddress, kMostLeft> left_;
    size_t leftCount_ = 0;
};

}  // namespace vboard::datapath
