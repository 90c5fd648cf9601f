// The VLANs that settings come to.
#pragma once

#include "hals/linux_switch/memory.h"

namespace linux_switch {

// Ids that a port may be a member of, each once.
struct VidList {
    uint16_t vid[kPorts + kSteerings + 1];
    int count = 0;

    void Add(uint16_t added);
};

VidList VidsOf(const SwitchMemory& memory, int port);

constexpr int kNotMember = -1;
// BRIDGE_VLAN_INFO_ flags of a port in a VLAN.
int FlagsIn(const SwitchMemory& memory, int port, uint16_t vid);

}  // namespace linux_switch
