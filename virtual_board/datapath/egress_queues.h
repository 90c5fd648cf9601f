// What stands between the forwarding decision and the wire: eight queues per port in strict
// priority, the packet memory they share, and the rate of each port.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "virtual_board/chips/vs08/forwarding.h"
#include "virtual_board/datapath/packet_memory.h"

namespace vboard::datapath {

class EgressQueues {
public:
    using Time = std::chrono::nanoseconds;

    struct Admission {
        unsigned ingress;
        unsigned port;
        uint16_t vid;
        uint8_t pcp;
        bool dei;
        bool copy;  // made by mirroring
        Offload offload = {};
    };
    enum class Verdict { kQueued, kNoBuffer, kDiscarded };

    // A packet that begins to leave; to be released before the next one is asked for.
    struct Departure {
        unsigned port;
        Admission admission;
        std::span<const iovec> pieces;
        size_t bytes;
        uint16_t first;
    };

    EgressQueues();
    // Which of a port's queues a priority takes.
    static constexpr unsigned QueueOf(uint8_t pcp) { return pcp < 2 ? 1u - pcp : pcp; }
    // The view must stay; to be called when it has changed. Ports without a link lose their frames.
    void Configure(const vswitch::ForwardingView& view);
    void Clear();

    // Whether a long packet may take these ports' queues whole: it is there as its frames would be,
    // none of them is discarded, and those of other packets wait no longer than a frame or two.
    bool TakesWhole(vswitch::PortMask destinations, unsigned ingress, const Shape& shape) const;
    Verdict Admit(const Admission& admission, Bytes packet, Time now);
    // The next frame that leaves no later than now.
    bool Depart(Time now, Departure& departure);
    void Release(const Departure& departure);
    std::optional<Time> NextDeparture() const;

    // The ports whose frames have turned red since the last call.
    vswitch::PortMask TakeTurnedRed();

private:
    static constexpr uint16_t kNone = 0xFFFF;

    struct Stored {  // by the frame's first buffer
        Admission admission;
        uint16_t next;
        uint16_t buffers;
        uint32_t bytes;
        Time arrived;
    };
    struct Queue {
        uint16_t head = kNone;
        uint16_t tail = kNone;
        unsigned buffers = 0;
        double average = 0;
    };

    static unsigned QueueOf(unsigned port, uint8_t pcp);
    bool FitsBesideReserved(unsigned queue, unsigned buffers) const;
    unsigned Unfilled(unsigned queue) const;
    void Hold(unsigned queue, unsigned ingress, int buffers);
    void FollowColour(unsigned ingress);
    bool DiscardedEarly(unsigned queue, const Admission& admission);
    bool Draw(double average, uint16_t minimum, uint16_t maximum);
    unsigned ColourOf(const Admission& admission) const;
    void Append(unsigned queue, Bytes packet, unsigned buffers, const Admission& admission,
                Time now);
    uint16_t RemoveHead(unsigned queue);
    void Drop(unsigned port);
    Time WireTime(unsigned port, const Shape& shape) const;

    const vswitch::ForwardingView* view_ = nullptr;
    PacketMemory memory_;
    std::vector<Stored> stored_;
    std::array<Queue, vswitch::kQueues> queues_{};
    std::array<uint8_t, vswitch::kPorts> waiting_{};  // queues with frames, a bit each
    std::array<Time, vswitch::kPorts> wireFree_{};
    std::array<unsigned, vswitch::kPorts> heldOf_{};  // buffers, by ingress port
    vswitch::PortMask busy_ = 0;
    vswitch::PortMask red_ = 0;
    vswitch::PortMask turnedRed_ = 0;
    unsigned unfilled_ = 0;  // buffers reserved and not in use, of all queues
    double average_ = 0;
    uint32_t random_ = 1;
    PacketMemory::Pieces pieces_;
};

}  // namespace vboard::datapath
