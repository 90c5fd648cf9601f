// What an enabled VS08 does with frames, as its registers have it at this moment.
#pragma once

#include <cstdint>

#include "tools/orblinkctl/access/library.h"

namespace ctl {

struct ChipView {
    bool isolation;
    bool providerBridged;
    uint16_t tpid;
    uint16_t ageing;
    uint16_t mtu;
    bool snooping;
    bool earlyDetection;
    // No frame in the green passes from so many buffers on.
    uint16_t greenMost;
    bool receives;
};

struct ChipPort {
    PortId id;
    bool isLan;
    bool hasPhy;
    bool enabled;
    bool link;
    bool fullDuplex;
    uint32_t speed;  // enum OB_Speed
    uint16_t vlan;
    bool tagged;
    bool hasGroup;
    unsigned group;
    bool mirrored;
    unsigned mirrorTo;
    uint16_t xoff;
    uint16_t xon;
    // Of PHY ports; 0 of others.
    uint32_t setSpeed;  // enum OB_Speed
    bool setFullDuplex;
    bool eee;
    uint16_t testMode;
    uint16_t verification;
    bool isRgmii;
    bool delay;
};

ChipView ViewChip(unsigned device);
ChipPort ViewPort(const SwitchDeviceRecord& record, PortId id);
// The green limit of the queue that frames without a priority take at a port.
uint16_t QueueLimit(PortId id);

}  // namespace ctl
