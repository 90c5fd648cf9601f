#include "virtual_board/datapath/snooping.h"

#include <algorithm>

namespace vboard::datapath {
namespace {

using std::chrono::nanoseconds;
using vswitch::PortMask;

constexpr nanoseconds kMembershipTime = std::chrono::seconds(260);
constexpr nanoseconds kQuerierTime = std::chrono::seconds(255);
constexpr nanoseconds kLastMemberTime = std::chrono::seconds(2);

}  // namespace

PortMask StillIn(const PortTimes& until, nanoseconds now)
{
    unsigned ports = 0;
    for (unsigned p = 0; p < until.size(); ++p)
        ports |= (now < until[p] ? 1u : 0u) << p;
    return static_cast<PortMask>(ports);
}

GroupTable::GroupTable() : entries_(kGroups)
{
    Clear();
}

void GroupTable::Clear()
{
    first_.fill(kNone);
    for (size_t i = 0; i < kGroups; ++i)
        entries_[i].next = static_cast<int16_t>(i + 1);
    entries_.back().next = kNone;
    free_ = 0;
}

size_t GroupTable::BucketOf(const GroupAddress& group, uint16_t vid)
{
    uint64_t key = vid;
    for (uint8_t octet : group)
        key = (key ^ octet) * 0x100000001B3;
    return (key * 0x9E3779B97F4A7C15u >> 32) % kGroups;
}

int16_t GroupTable::Find(const GroupAddress& group, uint16_t vid) const
{
    int16_t at = first_[BucketOf(group, vid)];
    while (at != kNone && (entries_[at].group != group || entries_[at].vid != vid))
        at = entries_[at].next;
    return at;
}

void GroupTable::DropEnded(nanoseconds now)
{
    for (int16_t& bucket : first_) {
        for (int16_t* link = &bucket; *link != kNone;) {
            Entry& entry = entries_[*link];
            if (StillIn(entry.until, now) != 0) {
                link = &entry.next;
                continue;
            }
            const int16_t ended = *link;
            *link = entry.next;
            entry.next = free_;
            free_ = ended;
        }
    }
}

int16_t GroupTable::Make(const GroupAddress& group, uint16_t vid, nanoseconds now)
{
    if (free_ == kNone)
        DropEnded(now);
    if (free_ == kNone)
        return kNone;
    const int16_t made = free_;
    free_ = entries_[made].next;
    int16_t& bucket = first_[BucketOf(group, vid)];
    entries_[made] = {group, vid, {}, bucket};
    bucket = made;
    return made;
}

void GroupTable::Join(const GroupAddress& group, uint16_t vid, unsigned port, nanoseconds now)
{
    int16_t at = Find(group, vid);
    if (at == kNone)
        at = Make(group, vid, now);
    if (at != kNone)
        entries_[at].until[port] = now + kMembershipTime;
}

bool GroupTable::Leave(const GroupAddress& group, uint16_t vid, unsigned port, nanoseconds now)
{
    const int16_t at = Find(group, vid);
    if (at == kNone || entries_[at].until[port] <= now)
        return false;
    entries_[at].until[port] = std::min(entries_[at].until[port], now + kLastMemberTime);
    return true;
}

PortMask GroupTable::Members(const GroupAddress& group, uint16_t vid, nanoseconds now) const
{
    const int16_t at = Find(group, vid);
    return at == kNone ? PortMask{0} : StillIn(entries_[at].until, now);
}

Snooping::Snooping()
{
    for (Family& family : families_) {
        family.queriers.resize(vswitch::kMaxVid + 1);
        family.routers.resize(vswitch::kMaxVid + 1);
    }
}

void Snooping::Forget(Protocol protocol)
{
    Family& family = Of(protocol);
    if (family.empty)
        return;
    family.groups.Clear();
    std::ranges::fill(family.queriers, PortTimes{});
    std::ranges::fill(family.routers, PortTimes{});
    family.empty = true;
}

void Snooping::Note(Family& family, const MulticastPacket& report, unsigned port, uint16_t vid,
                    nanoseconds now)
{
    const bool asked = StillIn(family.queriers[vid], now) != 0;
    report.ForEachChange([&](const GroupAddress& group, bool joins) {
        if (joins)
            family.groups.Join(group, vid, port, now);
        else if (family.groups.Leave(group, vid, port, now) && !asked && leftCount_ < kMostLeft)
            left_[leftCount_++] = group;
    });
}

void Snooping::Follow(const MulticastPacket& packet, unsigned port, uint16_t vid, nanoseconds now)
{
    using Kind = MulticastPacket::Kind;
    Family& family = Of(packet.Of());
    const Kind what = packet.What();
    family.empty = family.empty && what == Kind::kData;
    leftCount_ = 0;
    if (what == Kind::kQuery && packet.Elects())
        family.queriers[vid][port] = now + kQuerierTime;
    if (what == Kind::kHello)
        family.routers[vid][port] = now + packet.HoldTime();
    if (what == Kind::kReport)
        Note(family, packet, port, vid, now);
}

PortMask Snooping::Destinations(const MulticastPacket& packet, uint16_t vid, unsigned internalPort,
                                nanoseconds now) const
{
    using Kind = MulticastPacket::Kind;
    const Family& family = Of(packet.Of());
    const unsigned queriers = StillIn(family.queriers[vid], now);
    const unsigned toRouters =
        queriers | StillIn(family.routers[vid], now) | vswitch::MaskOf(internalPort);
    if (packet.What() == Kind::kReport)
        return static_cast<PortMask>(toRouters);
    if (packet.What() != Kind::kData || packet.Unrestricted())
        return kEverywhere;
    // Without a querier nobody is asked, so who has not reported may still want to hear.
    const PortMask members = family.groups.Members(packet.Group(), vid, now);
    if (members == 0 && queriers == 0)
        return kEverywhere;
    return static_cast<PortMask>(toRouters | members);
}

}  // namespace vboard::datapath
