// What a frame counts for at the port through which it comes or goes.
#pragma once

#include "virtual_board/chips/vs08/counters.h"
#include "virtual_board/datapath/offload.h"

namespace vboard::datapath {

// What a cable has done to a frame.
enum class Damage {
    kBadCheck,  // its frame check sequence is wrong
    kShort,     // it is shorter than a frame may be, otherwise good
    kFragment   // it is the rest of one, with a wrong frame check sequence
};

class FrameCounters {
public:
    explicit FrameCounters(vswitch::Counters& ofChip) : counters_(ofChip) {}

    // The frames of a packet. False: longer than the MTU, all of them.
    bool Received(unsigned port, const uint8_t* destination, const Shape& shape, size_t mtu);
    void ReceivedBad(unsigned port, size_t length, Damage damage, size_t mtu);
    void Sent(unsigned port, const uint8_t* destination, const Shape& shape);
    void Count(unsigned port, vswitch::CounterIndex counter, uint64_t value = 1)
    {
        counters_.Count(port, counter, value);
    }

private:
    void Length(unsigned port, size_t length, uint64_t frames, size_t mtu);

    vswitch::Counters& counters_;
};

}  // namespace vboard::datapath
