// The filters of traffic control that a switch's settings need, on the hooks of its ports.
#pragma once

#include "hals/linux_switch/link.h"
#include "hals/linux_switch/memory.h"

namespace linux_switch {

// Smaller precedences come first. Automatic ones of the kernel begin far above.
constexpr uint16_t kFirstPrecedence = 0x4F00;
constexpr uint16_t kLastPrecedence = 0x6000;

enum class FilterKind : uint8_t {
    kNone,
    kMirror,    // copies everything to an interface
    kApart,     // drops what comes from an interface
    kTagged,    // lets tagged frames pass the filters behind
    kSteering,  // tags the frames of some stations
    kPriority,  // tags all others
};

struct Filter {
    FilterKind kind;
    uint8_t egress;
    uint8_t pcp;
    uint8_t toHardware;  // only where the switch chip takes it
    uint16_t precedence;
    uint16_t vid;
    uint16_t tpid;
    uint8_t mac[6];
    uint8_t mask[6];
    uint32_t handle;
    uint32_t other;  // index of the other interface
    char otherName[IFNAMSIZ];

    bool operator==(const Filter&) const = default;
    bool SamePlace(const Filter& at) const
    {
        return egress == at.egress && precedence == at.precedence && handle == at.handle;
    }
};

// Mirror in and out, the other ports, tagged, stations, priority.
constexpr int kMostFilters = 2 + kPorts + 1 + kSteerings + 1;

struct FilterList {
    Filter filter[kMostFilters];
    int count = 0;

    const Filter* At(const Filter& place) const;
};

// LAN ports that must not reach each other. When none may reach any other the bridge keeps them
// apart itself, else filters do.
bool AreApart(const SwitchMemory& memory, int port, int other);
bool AreAllApart(const SwitchMemory& memory);

// What a port needs; the links are those of all ports.
FilterList FiltersOf(const SwitchMemory& memory, int port, const Link (&links)[kPorts]);

// Each gives 0 or an error number.
int PutFilter(Netlink& netlink, uint32_t index, const Filter& filter);
int DeleteFilter(Netlink& netlink, uint32_t index, const Filter& filter);
// All filters that this HAL has ever put there.
int DeleteAllFilters(Netlink& netlink, uint32_t index);
// The hook for filters. EEXIST: it was there.
int MakeHook(Netlink& netlink, uint32_t index);
// Takes the hook away unless somebody's filter hangs on it.
int DeleteIdleHook(Netlink& netlink, uint32_t index);

}  // namespace linux_switch
