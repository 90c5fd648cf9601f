#include "virtual_board/datapath/switch_engine.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vboard::datapath {

using namespace vswitch;
using Verdict = EgressQueues::Verdict;

namespace {

constexpr uint8_t kControlPriority = 7;
constexpr uint16_t kReservedVid = 4095;
constexpr uint16_t kCustomerTpid = 0x8100;
constexpr uint16_t kServiceTpid = 0x88A8;
constexpr uint8_t kPauseFrame[kShortest] = {0x01, 0x80, 0xC2, 0x00, 0x00, 0x01, 0x02, 0x56, 0x53,
                                            0x30, 0x38, 0x00, 0x88, 0x08, 0x00, 0x01, 0xFF, 0xFF};

}  // namespace

SwitchEngine::SwitchEngine(VswitchChip& switchChip, Wires& allWires)
    : chip_(switchChip), wires_(allWires), counters_(switchChip.PortCounters())
{
    FollowChip();
}

void SwitchEngine::FollowChip()
{
    if (changesSeen_ == chip_.ForwardingChanges())
        return;
    changesSeen_ = chip_.ForwardingChanges();
    view_ = &chip_.Forwarding();
    queues_.Configure(*view_);
    if (view_->resets != resetsSeen_)
        queues_.Clear();
    if (view_->resets != resetsSeen_ || view_->igmpForgotten != igmpSeen_)
        snooping_.Forget(Protocol::kIgmp);
    if (view_->resets != resetsSeen_ || view_->mldForgotten != mldSeen_)
        snooping_.Forget(Protocol::kMld);
    resetsSeen_ = view_->resets;
    igmpSeen_ = view_->igmpForgotten;
    mldSeen_ = view_->mldForgotten;
}

Bytes SwitchEngine::Padded(Bytes frame)
{
    if (frame.size() >= kShortest)
        return frame;
    padded_.fill(0);
    std::ranges::copy(frame, padded_.begin());
    return padded_;
}

const ForwardingView& SwitchEngine::View()
{
    FollowChip();
    return *view_;
}

bool SwitchEngine::Open(unsigned port) const
{
    return (view_->forwarding & MaskOf(port)) != 0 && chip_.Awake(port);
}

void SwitchEngine::Receive(unsigned port, Bytes given, Time now, const Offload& left)
{
    FollowChip();
    if (!Open(port) || given.size() < kHeader)
        return;
    Transmit(now);
    if (left.IsDone() || ComesInWhole(port, given, left))
        return TakeIn(port, given, left, now);
    Cutter cutter{given, left, comingIn_.data()};
    for (Bytes frame = cutter.Next(); !frame.empty(); frame = cutter.Next())
        TakeIn(port, frame, {}, now);
}

// Nobody looks at the single frames of the packet, and they are all treated alike.
bool SwitchEngine::ComesInWhole(unsigned port, Bytes packet, const Offload& left) const
{
    const size_t longest = ShapeOf(packet.size(), left).Longest() + kCheckSequence;
    return watcher_ == nullptr && view_->ports[port].mirrorTo == ForwardingView::kNoMirror &&
           (packet[0] & 1) == 0 && longest <= view_->mtu;
}

void SwitchEngine::TakeIn(unsigned port, Bytes given, const Offload& left, Time now)
{
    const Frame frame = Classify(port, Padded(given), left);
    const char* lost = Take(frame, given.size(), now);
    if (watcher_ != nullptr)
        watcher_->Received(frame, lost);
    Transmit(now);
}

// Why the frame goes no further, or null.
const char* SwitchEngine::Take(const Frame& frame, size_t length, Time now)
{
    const unsigned port = frame.port;
    const Shape shape = ShapeOf(frame.bytes.size(), frame.offload);
    if (!counters_.Received(port, frame.Destination(), shape, view_->mtu))
        return "longer than the MTU";
    if (const char* why = WhyNoFrame(frame, length)) {
        counters_.Count(port, kInDiscards);
        return why;
    }
    if (view_->ports[port].mirrorTo != ForwardingView::kNoMirror)
        Mirror(port, port, frame.tag, frame.bytes, now);
    const char* lost = Forward(frame, now);
    if (lost != nullptr && !IsPause(frame.Destination()))
        counters_.Count(port, kInDiscards);
    return lost;
}

void SwitchEngine::ReceiveBad(unsigned port, Bytes given, Time now, Damage damage)
{
    FollowChip();
    if (!Open(port) || given.size() < kHeader)
        return;
    const Bytes bytes = Padded(given);
    const size_t length = LengthOf(damage == Damage::kBadCheck ? bytes : given);
    counters_.ReceivedBad(port, length, damage, view_->mtu);
    if (watcher_ != nullptr)
        watcher_->Received(Classify(port, bytes), damage == Damage::kShort
                                                      ? "shorter than a frame may be"
                                                      : "wrong frame check sequence");
    Transmit(now);
}

const char* SwitchEngine::WhyNoFrame(const Frame& frame, size_t length)
{
    if (frame.tagged && length < kHeader + kTag)
        return "ends inside its tag";
    return (frame.Source()[0] & 1) != 0 ? "comes from a group" : nullptr;
}

Frame SwitchEngine::Classify(unsigned port, Bytes bytes, const Offload& left) const
{
    const auto& rules = view_->ports[port];
    Frame frame = Parse(port, bytes, rules.customer ? uint16_t{0} : view_->tpid);
    if (!frame.tagged)
        frame.tag.pcp = rules.pcp;
    if (frame.tag.vid == 0)
        frame.tag.vid = VlanOfUntagged(frame);
    frame.offload = left;
    return frame;
}

uint16_t SwitchEngine::VlanOfUntagged(const Frame& frame) const
{
    const uint64_t source = NumberOf(frame.Source());
    for (unsigned i = view_->firstRule[frame.port]; i < view_->firstRule[frame.port + 1]; ++i) {
        const auto& rule = view_->macVlanRules[i];
        if ((source & rule.mask) == rule.mac)
            return rule.vid;
    }
    return view_->ports[frame.port].pvid;
}

// Why the frame is discarded, or null.
const char* SwitchEngine::Forward(const Frame& frame, Time now)
{
    if (!Admitted(frame)) {
        counters_.Count(frame.port, kVlanInDiscards);
        return "the port is not in its VLAN";
    }
    Learn(frame, now);
    if (IsPause(frame.Destination()))
        return "a PAUSE frame";
    Snoop(frame, now);
    const PortMask destinations = RouteOf(frame, now).Ports();
    if (destinations == 0)
        return "no port to go to";
    Distribute(frame, destinations, now);
    return nullptr;
}

bool SwitchEngine::Admitted(const Frame& frame) const
{
    const uint16_t vid = frame.tag.vid;
    return vid != kReservedVid && (view_->members[vid] & MaskOf(frame.port)) != 0;
}

void SwitchEngine::Learn(const Frame& frame, Time now)
{
    const MacAddress source = AddressAt(frame.Source());
    if (IsStation(source) && !chip_.Stations().Learn(source, frame.tag.vid, frame.port, now))
        chip_.NoteStationRefused();
}

// To the bridge itself, which is the CPU behind the internal port; that one may send such frames.
bool SwitchEngine::Trapped(const Frame& frame) const
{
    const bool reserved = view_->providerBridged ? IsReservedOfProvider(frame.Destination())
                                                 : IsReserved(frame.Destination());
    return reserved && frame.port != view_->internalPort;
}

bool SwitchEngine::Snooped(const MulticastPacket& packet) const
{
    const bool followed = packet.Of() == Protocol::kIgmp ? view_->igmp : view_->mld;
    return followed && packet.What() != MulticastPacket::Kind::kOther;
}

void SwitchEngine::Snoop(const Frame& frame, Time now)
{
    if ((!view_->igmp && !view_->mld) || !frame.ToGroup() || Trapped(frame))
        return;
    const MulticastPacket packet(frame);
    if (!Snooped(packet))
        return;
    snooping_.Follow(packet, frame.port, frame.tag.vid, now);
    AskLastMembers(frame, packet, now);
}

// Where no querier does it the switch asks whether somebody behind the port stays.
void SwitchEngine::AskLastMembers(const Frame& leave, const MulticastPacket& packet, Time now)
{
    std::array<uint8_t, kLastMemberQuery> room;
    for (const GroupAddress& group : snooping_.Left()) {
        const Bytes query = ComposeLastMemberQuery(packet.Of(), group, room.data());
        Frame asked = Parse(view_->internalPort, query, 0);
        asked.tag = {leave.tag.vid, kControlPriority, false};
        Distribute(asked, MaskOf(leave.port), now);
    }
}

Route SwitchEngine::RouteOf(const Frame& frame, Time now) const
{
    const uint16_t vid = frame.tag.vid;
    Route route{Route::By::kFlood, kEverywhere, view_->members[vid], view_->forwarding,
                view_->ports[frame.port].reaches};
    if (Trapped(frame)) {
        route.by = Route::By::kReserved;
        route.wanted = MaskOf(view_->internalPort);
    } else if (frame.ToGroup()) {
        if (!view_->igmp && !view_->mld)
            return route;
        const MulticastPacket packet(frame);
        if (!Snooped(packet))
            return route;
        route.by = Route::By::kGroup;
        route.wanted = snooping_.Destinations(packet, vid, view_->internalPort, now);
    } else if (const auto* known = chip_.Stations().Find(AddressAt(frame.Destination()), vid)) {
        route.by = Route::By::kStation;
        route.wanted = MaskOf(known->port);
    }
    return route;
}

bool SwitchEngine::TaggedOn(unsigned port, uint16_t vid) const
{
    const auto& rules = view_->ports[port];
    if (port != view_->internalPort || rules.egressTag)
        return rules.egressTag;
    return view_->providerBridged || vid != rules.pvid;
}

const SwitchEngine::Variant& SwitchEngine::Outgoing(const Frame& frame, bool tagged)
{
    Variant& variant = variants_[tagged ? 1 : 0];
    if (!variant.bytes.empty())
        return variant;
    const bool asItIs = !tagged && !frame.tagged;
    variant.bytes = asItIs ? frame.bytes : Compose(frame, tagged, view_->tpid, variant.room.data());
    const int taken = static_cast<int>(frame.typeAt - kAddresses);
    variant.offload = frame.offload.MovedBy((tagged ? static_cast<int>(kTag) : 0) - taken);
    return variant;
}

bool SwitchEngine::GoesWhole(const Frame& frame, PortMask destinations) const
{
    // Hosts know only the identifiers of 802.1Q.
    if (view_->tpid != kCustomerTpid && view_->tpid != kServiceTpid)
        return false;
    const Shape shape = ShapeOf(frame.bytes.size(), frame.offload);
    const Shape tagged{shape.frames, shape.each + kTag, shape.last + kTag};
    return queues_.TakesWhole(destinations, frame.port, tagged);
}

void SwitchEngine::Distribute(const Frame& frame, PortMask destinations, Time now)
{
    if (frame.offload.IsLong() && !GoesWhole(frame, destinations)) {
        Cutter cutter{frame.bytes, frame.offload, waiting_.data()};
        Frame one = frame;
        one.offload = {};
        for (one.bytes = cutter.Next(); !one.bytes.empty(); one.bytes = cutter.Next())
            Distribute(one, destinations, now);
        return;
    }
    for (Variant& variant : variants_)
        variant.bytes = {};
    bool bufferFound = false;
    for (unsigned left = destinations; left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        const Variant& out = Outgoing(frame, TaggedOn(port, frame.tag.vid));
        const Verdict verdict = Admit(
            {frame.port, port, frame.tag.vid, frame.tag.pcp, frame.tag.dei, false, out.offload},
            out.bytes, now);
        bufferFound = bufferFound || verdict != Verdict::kNoBuffer;
    }
    if (!bufferFound)
        counters_.Count(frame.port, kDropEvents);
}

Verdict SwitchEngine::Admit(const EgressQueues::Admission& admission, Bytes frame, Time now)
{
    const Verdict verdict = queues_.Admit(admission, frame, now);
    if (verdict != Verdict::kQueued) {
        counters_.Count(admission.port, kOutDiscards);
        if (watcher_ != nullptr)
            watcher_->Discarded(admission, frame,
                                verdict == Verdict::kNoBuffer ? "no buffer" : "discarded early");
    }
    SendPauses();
    return verdict;
}

void SwitchEngine::SendPauses()
{
    for (unsigned left = queues_.TakeTurnedRed(); left != 0; left &= left - 1) {
        const auto port = static_cast<unsigned>(std::countr_zero(left));
        if (!view_->ports[port].fullDuplex)
            continue;
        uint8_t pause[kShortest];
        memcpy(pause, kPauseFrame, sizeof pause);
        const iovec piece{pause, sizeof pause};
        wires_.Send(port, {&piece, 1});
        counters_.Count(port, kPauseSent);
    }
}

void SwitchEngine::Mirror(unsigned port, unsigned ingress, const Tag& tag, Bytes frame, Time now)
{
    const auto to = static_cast<unsigned>(view_->ports[port].mirrorTo);
    if (view_->links & MaskOf(to))
        Admit({ingress, to, tag.vid, tag.pcp, tag.dei, true, {}}, frame, now);
}

void SwitchEngine::MirrorSent(const EgressQueues::Admission& admission,
                              std::span<const iovec> frame, Time now)
{
    const Bytes bytes = Gather(frame, mirrored_.data());
    Mirror(admission.port, admission.ingress, {admission.vid, admission.pcp, admission.dei}, bytes,
           now);
}

void SwitchEngine::Transmit(Time now)
{
    FollowChip();
    EgressQueues::Departure departure;
    while (queues_.Depart(now, departure)) {
        if (departure.admission.offload.IsDone() || LeavesWhole(departure.port))
            Send(departure.admission, departure.pieces, departure.bytes, now);
        else
            SendFrames(departure, now);
        queues_.Release(departure);
    }
}

bool SwitchEngine::LeavesWhole(unsigned port) const
{
    return watcher_ == nullptr && view_->ports[port].mirrorTo == ForwardingView::kNoMirror &&
           wires_.TakesPackets(port);
}

void SwitchEngine::SendFrames(const EgressQueues::Departure& departure, Time now)
{
    EgressQueues::Admission admission = departure.admission;
    admission.offload = {};
    const Bytes packet = Gather(departure.pieces, waiting_.data());
    Cutter cutter{packet, departure.admission.offload, goingOut_.data()};
    for (Bytes frame = cutter.Next(); !frame.empty(); frame = cutter.Next()) {
        const iovec piece{goingOut_.data(), frame.size()};
        Send(admission, {&piece, 1}, frame.size(), now);
    }
}

void SwitchEngine::Send(const EgressQueues::Admission& admission, std::span<const iovec> packet,
                        size_t size, Time now)
{
    const unsigned port = admission.port;
    if (admission.offload.IsDone())
        wires_.Send(port, packet);
    else
        wires_.SendPacket(port, packet, admission.offload);
    if (watcher_ != nullptr)
        watcher_->Sent(admission, packet);
    counters_.Sent(port, static_cast<const uint8_t*>(packet[0].iov_base),
                   ShapeOf(size, admission.offload));
    if (!admission.copy && view_->ports[port].mirrorTo != ForwardingView::kNoMirror)
        MirrorSent(admission, packet, now);
}

}  // namespace vboard::datapath
