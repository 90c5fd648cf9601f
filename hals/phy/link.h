// The link of a PHY.
#pragma once

#include <stdint.h>

#include "common/iface.h"

namespace ieee8023 {

class Phy;

struct LinkState {
    bool up = false;
    OB_Speed speed = OB_SPEED_UNKNOWN;
    bool fullDuplex = false;
    uint32_t eeeCap = 0;  // the capability that EEE at this speed would be
};

// False: no answer. Learns what the PHY can.
bool ReadLink(Phy& phy, LinkState& state);

}  // namespace ieee8023
