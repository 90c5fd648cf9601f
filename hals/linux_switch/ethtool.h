// What drivers tell and take by ethtool's netlink family: link, speed, EEE and counters. Functions
// give 0 or an error number.
#pragma once

#include "hals/linux_switch/netlink.h"
#include "switch/orblink_hal.h"

namespace linux_switch {

struct LinkMode {
    uint32_t megabits;  // 0: unknown
    bool fullDuplex;
    bool autoneg;
    bool negotiates;  // the interface can
};

struct EeeState {
    bool supported;
    bool enabled;
};

// A counter that the driver has not got.
constexpr uint64_t kUnknownCounter = UINT64_MAX;

// Counters of the groups that IEEE 802.3 and RFC 2819 define.
struct DriverCounters {
    uint64_t undersize, oversize, fragments, jabbers;
    uint64_t fcsErrors, alignErrors;
    uint64_t receivedFrames, receivedOctets, receivedMulticast, receivedBroadcast;
    uint64_t sentFrames, sentOctets, sentMulticast, sentBroadcast;
    uint64_t singleCollisions, multipleCollisions;
    uint64_t byLength[7];  // 64, 65 to 127, ..., 1519 and more
};

class Ethtool {
public:
    // Asks the kernel for the family's number.
    Ethtool();

    int GetMode(uint32_t index, LinkMode& mode);
    int SetMode(uint32_t index, const LinkMode& mode);
    int GetEee(uint32_t index, EeeState& state);
    int SetEee(uint32_t index, bool enabled);
    int GetCounters(uint32_t index, DriverCounters& counters);

    const char* Reason() const { return netlink_.Reason(); }

private:
    struct Command;

    Netlink netlink_;
    uint16_t family_ = 0;
    int unusable_ = 0;
};

}  // namespace linux_switch
