#include "virtual_board/datapath/egress_queues.h"

#include <algorithm>
#include <bit>

namespace vboard::datapath {
namespace {

using vswitch::kPorts;
using vswitch::kQueues;
using vswitch::MaskOf;
using vswitch::PortMask;

constexpr unsigned kPerPort = kQueues / kPorts;
constexpr size_t kPreambleAndGap = 20;
// For which a wire may be taken by the frames of one packet: more than 64 KiB at 1000 Mb/s.
constexpr std::chrono::milliseconds kLongestStay{1};
enum Colour : unsigned { kGreen, kYellow, kRed };

}  // namespace

EgressQueues::EgressQueues() : stored_(PacketMemory::kBuffers) {}

void EgressQueues::Clear()
{
    memory_.Clear();
    queues_ = {};
    waiting_ = {};
    wireFree_ = {};
    heldOf_ = {};
    busy_ = red_ = turnedRed_ = 0;
    average_ = 0;
    unfilled_ = 0;
    for (unsigned q = 0; q < kQueues; ++q)
        unfilled_ += Unfilled(q);
}

void EgressQueues::Configure(const vswitch::ForwardingView& changed)
{
    view_ = &changed;
    unfilled_ = 0;
    for (unsigned q = 0; q < kQueues; ++q)
        unfilled_ += Unfilled(q);
    for (unsigned p = 0; p < kPorts; ++p) {
        if (!(view_->links & MaskOf(p)))
            Drop(p);
    }
}

void EgressQueues::Drop(unsigned port)
{
    while (waiting_[port] != 0) {
        const unsigned queue = port * kPerPort + std::countr_zero(waiting_[port]);
        const uint16_t first = RemoveHead(queue);
        memory_.Release(first, stored_[first].buffers);
    }
    wireFree_[port] = {};
}

unsigned EgressQueues::QueueOf(unsigned port, uint8_t pcp)
{
    return port * kPerPort + QueueOf(pcp);
}

unsigned EgressQueues::Unfilled(unsigned queue) const
{
    const unsigned reserved = view_->queues[queue].reserved;
    return reserved > queues_[queue].buffers ? reserved - queues_[queue].buffers : 0;
}

bool EgressQueues::FitsBesideReserved(unsigned queue, unsigned buffers) const
{
    return memory_.Free() >= buffers + unfilled_ - Unfilled(queue);
}

void EgressQueues::Hold(unsigned queue, unsigned ingress, int buffers)
{
    unfilled_ -= Unfilled(queue);
    queues_[queue].buffers += buffers;
    unfilled_ += Unfilled(queue);
    heldOf_[ingress] += buffers;
    FollowColour(ingress);
}

void EgressQueues::FollowColour(unsigned ingress)
{
    const auto& rules = view_->ports[ingress];
    const bool was = (red_ & MaskOf(ingress)) != 0;
    const bool full = was ? heldOf_[ingress] > rules.xon : heldOf_[ingress] >= rules.xoff;
    const bool is = rules.xoff != 0 && full;
    if (is == was)
        return;
    red_ ^= MaskOf(ingress);
    if (is)
        turnedRed_ |= MaskOf(ingress);
}

unsigned EgressQueues::ColourOf(const Admission& admission) const
{
    if (red_ & MaskOf(admission.ingress))
        return kRed;
    return admission.dei ? kYellow : kGreen;
}

bool EgressQueues::Draw(double filling, uint16_t minimum, uint16_t maximum)
{
    if (filling >= maximum)
        return true;
    if (maximum <= minimum || filling < minimum)
        return false;
    random_ ^= random_ << 13;
    random_ ^= random_ >> 17;
    random_ ^= random_ << 5;
    const double risen = (filling - minimum) / (maximum - minimum);
    return random_ % 10000 < risen * view_->wred.maxPercent * 100;
}

bool EgressQueues::DiscardedEarly(unsigned queue, const Admission& admission)
{
    const auto& wred = view_->wred;
    if (!wred.enabled)
        return false;
    const double step = 1u << wred.weight;
    Queue& own = queues_[queue];
    own.average += (own.buffers - own.average) / step;
    average_ += (PacketMemory::kBuffers - memory_.Free() - average_) / step;
    const unsigned at = 2 * ColourOf(admission);
    const auto& limits = view_->queues[queue].thresholds;
    return Draw(own.average, limits[at], limits[at + 1]) ||
           Draw(average_, wred.thresholds[at], wred.thresholds[at + 1]);
}

bool EgressQueues::TakesWhole(PortMask destinations, unsigned ingress, const Shape& shape) const
{
    if (view_->wred.enabled || view_->ports[ingress].xoff != 0)
        return false;
    for (unsigned left = destinations; left != 0; left &= left - 1) {
        if (WireTime(static_cast<unsigned>(std::countr_zero(left)), shape) > kLongestStay)
            return false;
    }
    const unsigned copies = static_cast<unsigned>(std::popcount(destinations));
    return memory_.Free() >= copies * PacketMemory::BuffersOf(shape) + unfilled_;
}

EgressQueues::Verdict EgressQueues::Admit(const Admission& admission, Bytes packet, Time now)
{
    const unsigned buffers = PacketMemory::BuffersOf(ShapeOf(packet.size(), admission.offload));
    const unsigned queue = QueueOf(admission.port, admission.pcp);
    if (DiscardedEarly(queue, admission))
        return Verdict::kDiscarded;
    if (!FitsBesideReserved(queue, buffers))
        return Verdict::kNoBuffer;
    Append(queue, packet, buffers, admission, now);
    return Verdict::kQueued;
}

void EgressQueues::Append(unsigned queue, Bytes packet, unsigned buffers,
                          const Admission& admission, Time now)
{
    const uint16_t first = memory_.Store(packet, buffers);
    stored_[first] = {admission, kNone, static_cast<uint16_t>(buffers),
                      static_cast<uint32_t>(packet.size()), now};
    Queue& own = queues_[queue];
    (own.tail == kNone ? own.head : stored_[own.tail].next) = first;
    own.tail = first;
    waiting_[admission.port] |= static_cast<uint8_t>(1u << queue % kPerPort);
    busy_ |= MaskOf(admission.port);
    Hold(queue, admission.ingress, static_cast<int>(buffers));
}

uint16_t EgressQueues::RemoveHead(unsigned queue)
{
    Queue& own = queues_[queue];
    const uint16_t first = own.head;
    const Stored& frame = stored_[first];
    const unsigned port = frame.admission.port;
    own.head = frame.next;
    if (own.head == kNone) {
        own.tail = kNone;
        waiting_[port] &= static_cast<uint8_t>(~(1u << queue % kPerPort));
    }
    if (waiting_[port] == 0)
        busy_ &= static_cast<PortMask>(~MaskOf(port));
    Hold(queue, frame.admission.ingress, -static_cast<int>(frame.buffers));
    return first;
}

EgressQueues::Time EgressQueues::WireTime(unsigned port, const Shape& shape) const
{
    const uint64_t bits = 8 * (shape.Octets() + shape.frames * (kCheckSequence + kPreambleAndGap));
    const uint32_t megabits = std::max(view_->ports[port].megabits, 1u);
    return Time(static_cast<Time::rep>(bits * 1000 / megabits));
}

bool EgressQueues::Depart(Time now, Departure& departure)
{
    for (unsigned left = busy_; left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        if (wireFree_[port] > now)
            continue;
        const unsigned highest = static_cast<unsigned>(std::bit_width(waiting_[port])) - 1;
        const uint16_t first = RemoveHead(port * kPerPort + highest);
        const Stored& frame = stored_[first];
        const Shape shape = ShapeOf(frame.bytes, frame.admission.offload);
        wireFree_[port] = std::max(wireFree_[port], frame.arrived) + WireTime(port, shape);
        departure = {port, frame.admission, memory_.Show(first, frame.bytes, pieces_), frame.bytes,
                     first};
        return true;
    }
    return false;
}

void EgressQueues::Release(const Departure& departure)
{
    memory_.Release(departure.first, stored_[departure.first].buffers);
}

std::optional<EgressQueues::Time> EgressQueues::NextDeparture() const
{
    std::optional<Time> next;
    for (unsigned left = busy_; left != 0; left &= left - 1) {
        const Time free = wireFree_[std::countr_zero(left)];
        next = next ? std::min(*next, free) : free;
    }
    return next;
}

PortMask EgressQueues::TakeTurnedRed()
{
    const PortMask taken = turnedRed_;
    turnedRed_ = 0;
    return taken;
}

}  // namespace vboard::datapath
