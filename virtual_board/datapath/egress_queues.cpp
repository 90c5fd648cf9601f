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

EgressQueues::EgressQueues() : stored(PacketMemory::kBuffers) {}

void EgressQueues::Clear()
{
    memory.Clear();
    queues = {};
    waiting = {};
    wireFree = {};
    heldOf = {};
    busy = red = turnedRed = 0;
    average = 0;
    unfilled = 0;
    for (unsigned q = 0; q < kQueues; ++q)
        unfilled += Unfilled(q);
}

void EgressQueues::Configure(const vswitch::ForwardingView& changed)
{
    view = &changed;
    unfilled = 0;
    for (unsigned q = 0; q < kQueues; ++q)
        unfilled += Unfilled(q);
    for (unsigned p = 0; p < kPorts; ++p) {
        if (!(view->links & MaskOf(p)))
            Drop(p);
    }
}

void EgressQueues::Drop(unsigned port)
{
    while (waiting[port] != 0) {
        const unsigned queue = port * kPerPort + std::countr_zero(waiting[port]);
        const uint16_t first = RemoveHead(queue);
        memory.Release(first, stored[first].buffers);
    }
    wireFree[port] = {};
}

unsigned EgressQueues::QueueOf(unsigned port, uint8_t pcp)
{
    return port * kPerPort + QueueOf(pcp);
}

unsigned EgressQueues::Unfilled(unsigned queue) const
{
    const unsigned reserved = view->queues[queue].reserved;
    return reserved > queues[queue].buffers ? reserved - queues[queue].buffers : 0;
}

bool EgressQueues::FitsBesideReserved(unsigned queue, unsigned buffers) const
{
    return memory.Free() >= buffers + unfilled - Unfilled(queue);
}

void EgressQueues::Hold(unsigned queue, unsigned ingress, int buffers)
{
    unfilled -= Unfilled(queue);
    queues[queue].buffers += buffers;
    unfilled += Unfilled(queue);
    heldOf[ingress] += buffers;
    FollowColour(ingress);
}

void EgressQueues::FollowColour(unsigned ingress)
{
    const auto& rules = view->ports[ingress];
    const bool was = (red & MaskOf(ingress)) != 0;
    const bool full = was ? heldOf[ingress] > rules.xon : heldOf[ingress] >= rules.xoff;
    const bool is = rules.xoff != 0 && full;
    if (is == was)
        return;
    red ^= MaskOf(ingress);
    if (is)
        turnedRed |= MaskOf(ingress);
}

unsigned EgressQueues::ColourOf(const Admission& admission) const
{
    if (red & MaskOf(admission.ingress))
        return kRed;
    return admission.dei ? kYellow : kGreen;
}

bool EgressQueues::Draw(double filling, uint16_t minimum, uint16_t maximum)
{
    if (filling >= maximum)
        return true;
    if (maximum <= minimum || filling < minimum)
        return false;
    random ^= random << 13;
    random ^= random >> 17;
    random ^= random << 5;
    const double risen = (filling - minimum) / (maximum - minimum);
    return random % 10000 < risen * view->wred.maxPercent * 100;
}

bool EgressQueues::DiscardedEarly(unsigned queue, const Admission& admission)
{
    const auto& wred = view->wred;
    if (!wred.enabled)
        return false;
    const double step = 1u << wred.weight;
    Queue& own = queues[queue];
    own.average += (own.buffers - own.average) / step;
    average += (PacketMemory::kBuffers - memory.Free() - average) / step;
    const unsigned at = 2 * ColourOf(admission);
    const auto& limits = view->queues[queue].thresholds;
    return Draw(own.average, limits[at], limits[at + 1]) ||
           Draw(average, wred.thresholds[at], wred.thresholds[at + 1]);
}

bool EgressQueues::TakesWhole(PortMask destinations, unsigned ingress, const Shape& shape) const
{
    if (view->wred.enabled || view->ports[ingress].xoff != 0)
        return false;
    for (unsigned left = destinations; left != 0; left &= left - 1) {
        if (WireTime(static_cast<unsigned>(std::countr_zero(left)), shape) > kLongestStay)
            return false;
    }
    const unsigned copies = static_cast<unsigned>(std::popcount(destinations));
    return memory.Free() >= copies * PacketMemory::BuffersOf(shape) + unfilled;
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
    const uint16_t first = memory.Store(packet, buffers);
    stored[first] = {admission, kNone, static_cast<uint16_t>(buffers),
                     static_cast<uint32_t>(packet.size()), now};
    Queue& own = queues[queue];
    (own.tail == kNone ? own.head : stored[own.tail].next) = first;
    own.tail = first;
    waiting[admission.port] |= static_cast<uint8_t>(1u << queue % kPerPort);
    busy |= MaskOf(admission.port);
    Hold(queue, admission.ingress, static_cast<int>(buffers));
}

uint16_t EgressQueues::RemoveHead(unsigned queue)
{
    Queue& own = queues[queue];
    const uint16_t first = own.head;
    const Stored& frame = stored[first];
    const unsigned port = frame.admission.port;
    own.head = frame.next;
    if (own.head == kNone) {
        own.tail = kNone;
        waiting[port] &= static_cast<uint8_t>(~(1u << queue % kPerPort));
    }
    if (waiting[port] == 0)
        busy &= static_cast<PortMask>(~MaskOf(port));
    Hold(queue, frame.admission.ingress, -static_cast<int>(frame.buffers));
    return first;
}

EgressQueues::Time EgressQueues::WireTime(unsigned port, const Shape& shape) const
{
    const uint64_t bits = 8 * (shape.Octets() + shape.frames * (kCheckSequence + kPreambleAndGap));
    const uint32_t megabits = std::max(view->ports[port].megabits, 1u);
    return Time(static_cast<Time::rep>(bits * 1000 / megabits));
}

bool EgressQueues::Depart(Time now, Departure& departure)
{
    for (unsigned left = busy; left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        if (wireFree[port] > now)
            continue;
        const unsigned highest = static_cast<unsigned>(std::bit_width(waiting[port])) - 1;
        const uint16_t first = RemoveHead(port * kPerPort + highest);
        const Stored& frame = stored[first];
        const Shape shape = ShapeOf(frame.bytes, frame.admission.offload);
        wireFree[port] = std::max(wireFree[port], frame.arrived) + WireTime(port, shape);
        departure = {port, frame.admission, memory.Show(first, frame.bytes, pieces), frame.bytes,
                     first};
        return true;
    }
    return false;
}

void EgressQueues::Release(const Departure& departure)
{
    memory.Release(departure.first, stored[departure.first].buffers);
}

std::optional<EgressQueues::Time> EgressQueues::NextDeparture() const
{
    std::optional<Time> next;
    for (unsigned left = busy; left != 0; left &= left - 1) {
        const Time free = wireFree[std::countr_zero(left)];
        next = next ? std::min(*next, free) : free;
    }
    return next;
}

PortMask EgressQueues::TakeTurnedRed()
{
    const PortMask taken = turnedRed;
    turnedRed = 0;
    return taken;
}

}  // namespace vboard::datapath
