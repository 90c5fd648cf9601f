// Moves frames between the ports of a VS08 as section 5 of its register manual has it, from the
// registers, the MAC table and the counters of the chip model. No frame costs an allocation.
#pragma once

#include <sys/uio.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "virtual_board/chips/vs08/chip.h"
#include "virtual_board/datapath/egress_queues.h"
#include "virtual_board/datapath/frame.h"
#include "virtual_board/datapath/snooping.h"

namespace vboard::datapath {

// The far ends of the cables.
class Wires {
public:
    Wires() = default;
    Wires(const Wires&) = delete;
    Wires& operator=(const Wires&) = delete;
    virtual ~Wires() = default;

    // A frame without its frame check sequence, in pieces that are gone after the call.
    virtual void Send(unsigned port, std::span<const iovec> frame) = 0;
};

class SwitchEngine {
public:
    using Time = std::chrono::nanoseconds;

    SwitchEngine(VswitchChip& chip, Wires& wires);

    // A frame arrives, without its frame check sequence. The chip must have been advanced to now.
    void Receive(unsigned port, Bytes frame, Time now);
    // Sends what is to begin no later than now; Receive does it as well.
    void Transmit(Time now);
    // When Transmit has to be called next.
    std::optional<Time> NextTransmission() const { return queues.NextDeparture(); }

private:
    struct Variant {
        std::array<uint8_t, kLongest + kTag> room;
        Bytes bytes;
    };

    void FollowChip();
    Bytes Padded(Bytes frame);
    bool CountReceived(unsigned port, Bytes frame);
    void CountSent(unsigned port, const uint8_t* destination, size_t bytes);
    void Mirror(unsigned port, unsigned ingress, const Tag& tag, Bytes frame, Time now);
    void MirrorSent(const EgressQueues::Departure& departure, Time now);

    Frame Classify(unsigned port, Bytes bytes) const;
    uint16_t VlanOfUntagged(const Frame& frame) const;
    bool Forward(const Frame& frame, Time now);
    bool Admitted(const Frame& frame);
    void Learn(const Frame& frame, Time now);
    vswitch::PortMask Destinations(const Frame& frame, Time now);
    vswitch::PortMask Snooped(const Frame& frame, Time now);
    bool TaggedOn(unsigned port, uint16_t vid) const;
    Bytes Outgoing(const Frame& frame, bool tagged);
    void Distribute(const Frame& frame, vswitch::PortMask destinations, Time now);
    EgressQueues::Verdict Admit(const EgressQueues::Admission& admission, Bytes frame, Time now);
    void SendPauses();

    VswitchChip& chip;
    Wires& wires;
    const vswitch::ForwardingView* view = nullptr;
    vswitch::Counters& counters;
    Snooping snooping;
    EgressQueues queues;

    std::optional<uint32_t> changesSeen;
    uint32_t resetsSeen = 0;
    uint32_t igmpSeen = 0;
    uint32_t mldSeen = 0;

    std::array<uint8_t, kShortest> padded;
    std::array<Variant, 2> variants;  // without and with a tag, composed when first needed
    std::array<uint8_t, kLongest + kTag> mirrored;
};

}  // namespace vboard::datapath
