#include "virtual_board/datapath/frame_counters.h"

namespace vboard::datapath {

using namespace vswitch;

namespace {

constexpr size_t kHeaderAndCheck = 18;

// Sizes above 1518 have a counter of their own.
CounterIndex SizeCounter(size_t length)
{
    size_t bucket = 0;
    for (size_t end = 64; length > end && end < 1024; end = end == 64 ? 127 : 2 * end + 1)
        ++bucket;
    return static_cast<CounterIndex>(kPkts64 + bucket);
}

uint64_t DataOctets(const Shape& shape)
{
    return shape.Octets() + shape.frames * kCheckSequence - shape.frames * kHeaderAndCheck;
}

}  // namespace

void FrameCounters::Length(unsigned port, size_t length, uint64_t frames, size_t mtu)
{
    counters_.Count(port, kOctets, frames * length);
    counters_.Count(port, kPkts, frames);
    if (length < kShortest + kCheckSequence)
        return;
    if (length <= 1518)
        counters_.Count(port, SizeCounter(length), frames);
    else if (length <= mtu)
        counters_.Count(port, kPkts1519ToMax, frames);
}

bool FrameCounters::Received(unsigned port, const uint8_t* destination, const Shape& shape,
                             size_t mtu)
{
    Length(port, shape.each + kCheckSequence, shape.frames - 1, mtu);
    Length(port, shape.last + kCheckSequence, 1, mtu);
    if (shape.Longest() + kCheckSequence > mtu) {
        counters_.Count(port, kOversizePkts, shape.frames);
        counters_.Count(port, kMtuDiscards, shape.frames);
        return false;
    }
    if (destination[0] & 1)
        counters_.Count(port, IsBroadcast(destination) ? kBroadcastPkts : kMulticastPkts,
                        shape.frames);
    counters_.Count(port, kFramesReceived, shape.frames);
    counters_.Count(port, kOctetsReceived, DataOctets(shape));
    if (IsPause(destination))
        counters_.Count(port, kPauseReceived, shape.frames);
    return true;
}

void FrameCounters::ReceivedBad(unsigned port, size_t length, Damage damage, size_t mtu)
{
    Length(port, length, 1, mtu);
    if (damage == Damage::kShort)
        counters_.Count(port, kUndersizePkts);
    else if (damage == Damage::kFragment)
        counters_.Count(port, kFragments);
    else
        counters_.Count(port, length > mtu ? kJabbers : kCrcAlignErrors);
}

void FrameCounters::Sent(unsigned port, const uint8_t* destination, const Shape& shape)
{
    counters_.Count(port, kFramesSent, shape.frames);
    counters_.Count(port, kOctetsSent, DataOctets(shape));
    if (destination[0] & 1)
        counters_.Count(port, IsBroadcast(destination) ? kBroadcastSent : kMulticastSent,
                        shape.frames);
}

}  // namespace vboard::datapath
