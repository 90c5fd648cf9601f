#include "virtual_board/datapath/switch_engine.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vboard::datapath {

using namespace vswitch;
using Verdict = EgressQueues::Verdict;

namespace {

constexpr size_t kHeaderAndCheck = 18;
constexpr uint16_t kReservedVid = 4095;
constexpr uint8_t kPauseFrame[kShortest] = {0x01, 0x80, 0xC2, 0x00, 0x00, 0x01, 0x02, 0x56, 0x53,
                                            0x30, 0x38, 0x00, 0x88, 0x08, 0x00, 0x01, 0xFF, 0xFF};

// Sizes above 1518 have a counter of their own.
CounterIndex SizeCounter(size_t length)
{
    size_t bucket = 0;
    for (size_t end = 64; length > end && end < 1024; end = end == 64 ? 127 : 2 * end + 1)
        ++bucket;
    return static_cast<CounterIndex>(kPkts64 + bucket);
}

}  // namespace

SwitchEngine::SwitchEngine(VswitchChip& switchChip, Wires& allWires)
    : chip(switchChip), wires(allWires), counters(switchChip.PortCounters())
{
    FollowChip();
}

void SwitchEngine::FollowChip()
{
    if (changesSeen == chip.ForwardingChanges())
        return;
    changesSeen = chip.ForwardingChanges();
    view = &chip.Forwarding();
    queues.Configure(*view);
    if (view->resets != resetsSeen)
        queues.Clear();
    if (view->resets != resetsSeen || view->igmpForgotten != igmpSeen)
        snooping.Forget(Protocol::kIgmp);
    if (view->resets != resetsSeen || view->mldForgotten != mldSeen)
        snooping.Forget(Protocol::kMld);
    resetsSeen = view->resets;
    igmpSeen = view->igmpForgotten;
    mldSeen = view->mldForgotten;
}

Bytes SwitchEngine::Padded(Bytes frame)
{
    if (frame.size() >= kShortest)
        return frame;
    padded.fill(0);
    std::ranges::copy(frame, padded.begin());
    return padded;
}

void SwitchEngine::Receive(unsigned port, Bytes given, Time now)
{
    FollowChip();
    if (!(view->forwarding & MaskOf(port)) || !chip.Awake(port) || given.size() < kHeader)
        return;
    Transmit(now);
    const Bytes bytes = Padded(given);
    if (!CountReceived(port, bytes))
        return;
    const Frame frame = Classify(port, bytes);
    if (view->ports[port].mirrorTo != ForwardingView::kNoMirror)
        Mirror(port, port, frame.tag, bytes, now);
    if (!Forward(frame, now) && !IsReserved(frame.Destination()))
        counters.Count(port, kInDiscards);
    Transmit(now);
}

// False: longer than the MTU.
bool SwitchEngine::CountReceived(unsigned port, Bytes frame)
{
    const size_t length = LengthOf(frame);
    counters.Count(port, kOctets, length);
    counters.Count(port, kPkts);
    if (length <= 1518)
        counters.Count(port, SizeCounter(length));
    else if (length <= view->mtu)
        counters.Count(port, kPkts1519ToMax);
    if (length > view->mtu) {
        counters.Count(port, kOversizePkts);
        counters.Count(port, kMtuDiscards);
        return false;
    }
    const uint8_t* destination = frame.data();
    if (destination[0] & 1)
        counters.Count(port, IsBroadcast(destination) ? kBroadcastPkts : kMulticastPkts);
    counters.Count(port, kFramesReceived);
    counters.Count(port, kOctetsReceived, length - kHeaderAndCheck);
    if (IsPause(destination))
        counters.Count(port, kPauseReceived);
    return true;
}

Frame SwitchEngine::Classify(unsigned port, Bytes bytes) const
{
    const auto& rules = view->ports[port];
    Frame frame = Parse(port, bytes, rules.customer ? uint16_t{0} : view->tpid);
    if (!frame.tagged)
        frame.tag.pcp = rules.pcp;
    if (frame.tag.vid == 0)
        frame.tag.vid = VlanOfUntagged(frame);
    return frame;
}

uint16_t SwitchEngine::VlanOfUntagged(const Frame& frame) const
{
    const uint64_t source = NumberOf(frame.Source());
    for (unsigned i = view->firstRule[frame.port]; i < view->firstRule[frame.port + 1]; ++i) {
        const auto& rule = view->macVlanRules[i];
        if ((source & rule.mask) == rule.mac)
            return rule.vid;
    }
    return view->ports[frame.port].pvid;
}

// False: discarded.
bool SwitchEngine::Forward(const Frame& frame, Time now)
{
    if (!Admitted(frame)) {
        counters.Count(frame.port, kVlanInDiscards);
        return false;
    }
    Learn(frame, now);
    if (IsReserved(frame.Destination()))
        return false;
    const PortMask destinations = Destinations(frame, now);
    if (destinations != 0)
        Distribute(frame, destinations, now);
    return destinations != 0;
}

bool SwitchEngine::Admitted(const Frame& frame)
{
    const uint16_t vid = frame.tag.vid;
    return vid != kReservedVid && (view->members[vid] & MaskOf(frame.port)) != 0;
}

void SwitchEngine::Learn(const Frame& frame, Time now)
{
    const MacAddress source = AddressAt(frame.Source());
    if (IsStation(source) && !chip.Stations().Learn(source, frame.tag.vid, frame.port, now))
        chip.NoteStationRefused();
}

PortMask SwitchEngine::Destinations(const Frame& frame, Time now)
{
    unsigned ports = 0xFF;
    if (frame.ToGroup())
        ports = Snooped(frame, now);
    else if (const auto* known =
                 chip.Stations().Find(AddressAt(frame.Destination()), frame.tag.vid))
        ports = MaskOf(known->port);
    return static_cast<PortMask>(ports & view->members[frame.tag.vid] & view->forwarding &
                                 view->ports[frame.port].reaches);
}

PortMask SwitchEngine::Snooped(const Frame& frame, Time now)
{
    constexpr PortMask kEverywhere = 0xFF;
    if (!view->igmp && !view->mld)
        return kEverywhere;
    const MulticastPacket packet(frame);
    const bool followed = packet.Of() == Protocol::kIgmp ? view->igmp : view->mld;
    if (packet.What() == MulticastPacket::Kind::kOther || !followed)
        return kEverywhere;
    return snooping.Follow(packet, frame.port, frame.tag.vid, view->internalPort, now);
}

bool SwitchEngine::TaggedOn(unsigned port, uint16_t vid) const
{
    const auto& rules = view->ports[port];
    if (port != view->internalPort || rules.egressTag)
        return rules.egressTag;
    return view->providerBridged || vid != rules.pvid;
}

Bytes SwitchEngine::Outgoing(const Frame& frame, bool tagged)
{
    Variant& variant = variants[tagged ? 1 : 0];
    if (variant.bytes.empty()) {
        const bool asItIs = !tagged && !frame.tagged;
        variant.bytes =
            asItIs ? frame.bytes : Compose(frame, tagged, view->tpid, variant.room.data());
    }
    return variant.bytes;
}

void SwitchEngine::Distribute(const Frame& frame, PortMask destinations, Time now)
{
    for (Variant& variant : variants)
        variant.bytes = {};
    bool bufferFound = false;
    for (unsigned left = destinations; left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        const Bytes out = Outgoing(frame, TaggedOn(port, frame.tag.vid));
        const Verdict verdict =
            Admit({frame.port, port, frame.tag.pcp, frame.tag.dei, false}, out, now);
        bufferFound = bufferFound || verdict != Verdict::kNoBuffer;
    }
    if (!bufferFound)
        counters.Count(frame.port, kDropEvents);
}

Verdict SwitchEngine::Admit(const EgressQueues::Admission& admission, Bytes frame, Time now)
{
    const Verdict verdict = queues.Admit(admission, frame, now);
    if (verdict != Verdict::kQueued)
        counters.Count(admission.port, kOutDiscards);
    SendPauses();
    return verdict;
}

void SwitchEngine::SendPauses()
{
    for (unsigned left = queues.TakeTurnedRed(); left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        if (!view->ports[port].fullDuplex)
            continue;
        uint8_t pause[kShortest];
        memcpy(pause, kPauseFrame, sizeof pause);
        const iovec piece{pause, sizeof pause};
        wires.Send(port, {&piece, 1});
        counters.Count(port, kPauseSent);
    }
}

void SwitchEngine::Mirror(unsigned port, unsigned ingress, const Tag& tag, Bytes frame, Time now)
{
    const auto to = static_cast<unsigned>(view->ports[port].mirrorTo);
    if (view->links & MaskOf(to))
        Admit({ingress, to, tag.pcp, tag.dei, true}, frame, now);
}

void SwitchEngine::MirrorSent(const EgressQueues::Departure& departure, Time now)
{
    size_t size = 0;
    for (const iovec& piece : departure.pieces) {
        memcpy(mirrored.data() + size, piece.iov_base, piece.iov_len);
        size += piece.iov_len;
    }
    const auto& admission = departure.admission;
    Mirror(departure.port, admission.ingress, {0, admission.pcp, admission.dei},
           {mirrored.data(), size}, now);
}

void SwitchEngine::Transmit(Time now)
{
    FollowChip();
    EgressQueues::Departure departure;
    while (queues.Depart(now, departure)) {
        const unsigned port = departure.port;
        wires.Send(port, departure.pieces);
        CountSent(port, static_cast<const uint8_t*>(departure.pieces[0].iov_base), departure.bytes);
        if (!departure.admission.copy && view->ports[port].mirrorTo != ForwardingView::kNoMirror)
            MirrorSent(departure, now);
        queues.Release(departure);
    }
}

void SwitchEngine::CountSent(unsigned port, const uint8_t* destination, size_t bytes)
{
    counters.Count(port, kFramesSent);
    counters.Count(port, kOctetsSent, bytes + kCheckSequence - kHeaderAndCheck);
    if (destination[0] & 1)
        counters.Count(port, IsBroadcast(destination) ? kBroadcastSent : kMulticastSent);
}

}  // namespace vboard::datapath
