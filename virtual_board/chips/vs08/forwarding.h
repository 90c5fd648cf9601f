// What the registers of the VS08 model mean for a frame, decoded once per change instead of once
// per frame.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

#include "virtual_board/chips/vs08/global.h"
#include "virtual_board/chips/vs08/mac_vlan.h"
#include "virtual_board/chips/vs08/ports.h"
#include "virtual_board/chips/vs08/qos.h"

namespace vboard::vswitch {

using PortMask = uint8_t;

constexpr PortMask MaskOf(unsigned port)
{
    return static_cast<PortMask>(1u << port);
}

struct ForwardingView {
    static constexpr int kNoMirror = -1;

    struct PortRules {
        uint16_t pvid;
        uint8_t pcp;
        bool egressTag;
        bool customer;     // recognises no tag
        int mirrorTo;      // kNoMirror: not mirrored
        PortMask reaches;  // by groups and isolation; never the port itself
        uint16_t xoff;
        uint16_t xon;
        uint32_t megabits;  // per second; 0 without a link
        bool fullDuplex;
    };
    // Of the addresses as numbers; the mask has ones in the nibbles that are compared.
    struct MacVlanRule {
        uint64_t mac;
        uint64_t mask;
        uint16_t vid;
    };
    struct Wred {
        bool enabled;
        unsigned weight;
        unsigned maxPercent;
        std::array<uint16_t, 6> thresholds;
    };

    std::array<PortRules, kPorts> ports;
    PortMask links;       // LINK is 1
    PortMask forwarding;  // of these, those in no verification test
    unsigned internalPort;
    bool providerBridged;
    uint16_t tpid;  // recognised, and added
    uint16_t mtu;
    bool igmp;
    bool mld;

    std::array<PortMask, kMaxVid + 2> members;  // by VLAN id
    // Those of port p from firstRule[p] to before firstRule[p + 1], the one that counts first.
    std::array<MacVlanRule, kMacVlanEntries> macVlanRules;
    std::array<uint8_t, kPorts + 1> firstRule;

    Wred wred;
    std::array<Queues::Settings, kQueues> queues;

    // Each changes when what was learnt or queued so far is void.
    uint32_t resets;
    uint32_t igmpForgotten;
    uint32_t mldForgotten;
};

// Everything but the last three.
void Decode(const GlobalRegisters& global, const std::vector<Port>& ports,
            const MacVlanTable& macVlan, const Queues& queues, ForwardingView& view);

// An address as a number, its first octet highest.
uint64_t NumberOf(const uint8_t* mac);

}  // namespace vboard::vswitch
