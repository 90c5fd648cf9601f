// Moves frames between the ports of a VS08 as section 5 of its register manual has it, from the
// registers, the MAC table and the counters of the chip model. No frame costs an allocation.
#pragma once

#include <sys/uio.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "virtual_board/chips/vs08/chip.h"
#include "virtual_board/datapath/egress_queues.h"
#include "virtual_board/datapath/frame.h"
#include "virtual_board/datapath/frame_counters.h"
#include "virtual_board/datapath/last_member_query.h"
#include "virtual_board/datapath/offload.h"
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
    // Whether the far end takes packets of which something is left to do.
    virtual bool TakesPackets(unsigned /*port*/) const { return false; }
    virtual void SendPacket(unsigned /*port*/, std::span<const iovec> /*packet*/,
                            const Offload& /*left*/)
    {
    }
};

// Is told what becomes of each frame; the frame is gone after the call.
class Watcher {
public:
    Watcher() = default;
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;
    virtual ~Watcher() = default;

    // Came in; `lost` says why it goes no further, null that it does.
    virtual void Received(const Frame& frame, const char* lost) = 0;
    // Goes out, or is not taken by its queue.
    virtual void Sent(const EgressQueues::Admission& admission, std::span<const iovec> frame) = 0;
    virtual void Discarded(const EgressQueues::Admission& admission, Bytes frame,
                           const char* why) = 0;
};

// Where a frame goes: each set of ports with the next is what is left of it.
struct Route {
    enum class By { kReserved, kStation, kFlood, kGroup };

    By by;
    vswitch::PortMask wanted;
    vswitch::PortMask members;     // of its VLAN
    vswitch::PortMask forwarding;  // with a link, in no test
    vswitch::PortMask reachable;   // isolation and groups

    vswitch::PortMask Ports() const { return wanted & members & forwarding & reachable; }
};

class SwitchEngine {
public:
    using Time = std::chrono::nanoseconds;

    SwitchEngine(VswitchChip& chip, Wires& wires);

    // A frame arrives, without its frame check sequence, or a packet of which something is left to
    // do. The chip must have been advanced to now.
    void Receive(unsigned port, Bytes frame, Time now, const Offload& left = {});
    // One arrives that the cable has damaged.
    void ReceiveBad(unsigned port, Bytes frame, Time now, Damage damage = Damage::kBadCheck);
    // A frame has collided on its cable.
    void CountCollisions(unsigned port, unsigned times)
    {
        counters_.Count(port, vswitch::kCollisions, times);
    }
    // Sends what is to begin no later than now; Receive does it as well.
    void Transmit(Time now);
    // When Transmit has to be called next.
    std::optional<Time> NextTransmission() const { return queues_.NextDeparture(); }

    // Null: nobody is told any more.
    void Watch(Watcher* told) { watcher_ = told; }

    // What Receive would do with a frame now, step by step; it changes nothing.
    const vswitch::ForwardingView& View();
    bool Open(unsigned port) const;
    // The frame is padded to the shortest length.
    Frame Classify(unsigned port, Bytes bytes, const Offload& left = {}) const;
    static const char* WhyNoFrame(const Frame& frame, size_t length);
    bool Admitted(const Frame& frame) const;
    Route RouteOf(const Frame& frame, Time now) const;
    bool TaggedOn(unsigned port, uint16_t vid) const;

private:
    struct Variant {
        std::vector<uint8_t> room = std::vector<uint8_t>(kLongestPacket);
        Bytes bytes;
        Offload offload;
    };

    void FollowChip();
    Bytes Padded(Bytes frame);
    bool ComesInWhole(unsigned port, Bytes packet, const Offload& left) const;
    bool GoesWhole(const Frame& frame, vswitch::PortMask destinations) const;
    bool LeavesWhole(unsigned port) const;
    void TakeIn(unsigned port, Bytes given, const Offload& left, Time now);
    void Mirror(unsigned port, unsigned ingress, const Tag& tag, Bytes frame, Time now);
    void MirrorSent(const EgressQueues::Admission& admission, std::span<const iovec> frame,
                    Time now);
    void Send(const EgressQueues::Admission& admission, std::span<const iovec> packet, size_t size,
              Time now);
    void SendFrames(const EgressQueues::Departure& departure, Time now);

    uint16_t VlanOfUntagged(const Frame& frame) const;
    const char* Take(const Frame& frame, size_t length, Time now);
    const char* Forward(const Frame& frame, Time now);
    void Learn(const Frame& frame, Time now);
    bool Trapped(const Frame& frame) const;
    bool Snooped(const MulticastPacket& packet) const;
    void Snoop(const Frame& frame, Time now);
    void AskLastMembers(const Frame& leave, const MulticastPacket& packet, Time now);
    const Variant& Outgoing(const Frame& frame, bool tagged);
    void Distribute(const Frame& frame, vswitch::PortMask destinations, Time now);
    EgressQueues::Verdict Admit(const EgressQueues::Admission& admission, Bytes frame, Time now);
    void SendPauses();

    VswitchChip& chip_;
    Wires& wires_;
    const vswitch::ForwardingView* view_ = nullptr;
    FrameCounters counters_;
    Watcher* watcher_ = nullptr;
    Snooping snooping_;
    EgressQueues queues_;

    std::optional<uint32_t> changesSeen_;
    uint32_t resetsSeen_ = 0;
    uint32_t igmpSeen_ = 0;
    uint32_t mldSeen_ = 0;

    std::array<uint8_t, kShortest> padded_;
    std::array<Variant, 2> variants_;  // without and with a tag, composed when first needed
    std::vector<uint8_t> mirrored_ = std::vector<uint8_t>(kLongestPacket);
    std::vector<uint8_t> comingIn_ = std::vector<uint8_t>(kLongestPacket);  // frames cut there
    std::vector<uint8_t> waiting_ = std::vector<uint8_t>(kLongestPacket);   // before they go out
    std::vector<uint8_t> goingOut_ = std::vector<uint8_t>(kLongestPacket);  // and then
};

}  // namespace vboard::datapath
