// Which filters a port's settings come to.
#include "hals/linux_switch/filters.h"

namespace linux_switch {
namespace {

constexpr uint16_t kFirst = kFirstPrecedence;
constexpr uint16_t kApartAt = kFirst;
constexpr uint16_t kMirrorAt = kFirst + 0x10;
constexpr uint16_t kTaggedAt = kFirst + 0x20;
constexpr uint16_t kSteeringAt = kFirst + 0x100;  // 4096 masks
constexpr uint16_t kPriorityAt = kSteeringAt + 0x1000;
static_assert(kPriorityAt == kLastPrecedence);

constexpr unsigned kMaskBits = 12;

unsigned BitsOf(unsigned mask)
{
    unsigned bits = 0;
    for (unsigned bit = 0; bit < kMaskBits; ++bit)
        bits += mask >> bit & 1;
    return bits;
}

// Of several stations that match, the one with the most nibbles counts, of equally many the one with
// the larger mask: how many masks go before.
uint16_t RankOf(unsigned mask)
{
    uint16_t before = 0;
    const unsigned own = BitsOf(mask);
    for (unsigned other = 0; other < 1U << kMaskBits; ++other) {
        const unsigned bits = BitsOf(other);
        if (bits > own || (bits == own && other > mask))
            ++before;
    }
    return before;
}

void SpreadMask(unsigned mask, uint8_t (&octets)[6])
{
    for (unsigned nibble = 0; nibble < kMaskBits; ++nibble) {
        if (mask >> nibble & 1)
            octets[5 - nibble / 2] |= static_cast<uint8_t>(nibble % 2 ? 0xF0 : 0x0F);
    }
}

Filter& Add(FilterList& list, FilterKind kind, uint16_t precedence)
{
    Filter& filter = list.filter[list.count++];
    filter = {};
    filter.kind = kind;
    filter.precedence = precedence;
    filter.handle = 1;
    return filter;
}

void AddMirror(FilterList& list, const SwitchMemory& memory, int port, const Link (&links)[kPorts])
{
    const uint8_t to = memory.port[port].mirror;
    if (to >= memory.ports || !links[to])
        return;
    for (uint8_t egress = 0; egress < 2; ++egress) {
        Filter& filter = Add(list, FilterKind::kMirror, static_cast<uint16_t>(kMirrorAt + to));
        filter.egress = egress;
        filter.other = links[to].index;
    }
}

void AddApart(FilterList& list, const SwitchMemory& memory, int port, const Link (&links)[kPorts])
{
    if (!memory.IsLanPort(port) || AreAllApart(memory))
        return;
    for (int other = 0; other < memory.ports; ++other) {
        if (!memory.IsLanPort(other) || !links[other] || !AreApart(memory, port, other))
            continue;
        Filter& filter = Add(list, FilterKind::kApart, static_cast<uint16_t>(kApartAt + other));
        filter.egress = 1;
        filter.other = links[other].index;
        memcpy(filter.otherName, memory.port[other].name, sizeof filter.otherName);
    }
}

void AddSteering(FilterList& list, const SwitchMemory& memory, int number)
{
    const Steering& steering = memory.steering[number];
    const unsigned mask = steering.mask & ((1U << kMaskBits) - 1);
    Filter& filter =
        Add(list, FilterKind::kSteering, static_cast<uint16_t>(kSteeringAt + RankOf(mask)));
    filter.handle = static_cast<uint32_t>(number + 1);
    filter.vid = steering.vid;
    filter.tpid = memory.tpid;
    filter.pcp = memory.port[steering.port].pcp;
    SpreadMask(mask, filter.mask);
    for (size_t i = 0; i < sizeof filter.mac; ++i)
        filter.mac[i] = steering.mac[i] & filter.mask[i];
}

}  // namespace

const Filter* FilterList::At(const Filter& place) const
{
    for (int i = 0; i < count; ++i) {
        if (filter[i].SamePlace(place))
            return &filter[i];
    }
    return nullptr;
}

bool AreApart(const SwitchMemory& memory, int port, int other)
{
    const uint32_t group = memory.port[port].group;
    if (port == other || group != memory.port[other].group)
        return port != other;
    return group == kNoGroup && memory.isolation != 0;
}

bool AreAllApart(const SwitchMemory& memory)
{
    bool any = false;
    for (int port = 0; port < memory.ports; ++port) {
        for (int other = 0; other < port; ++other) {
            if (!memory.IsLanPort(port) || !memory.IsLanPort(other))
                continue;
            if (!AreApart(memory, port, other))
                return false;
            any = true;
        }
    }
    return any;
}

FilterList FiltersOf(const SwitchMemory& memory, int port, const Link (&links)[kPorts])
{
    FilterList list;
    AddApart(list, memory, port, links);
    AddMirror(list, memory, port, links);
    const int before = list.count;
    for (int i = 0; i < kSteerings; ++i) {
        if (memory.steering[i].used && memory.steering[i].port == port)
            AddSteering(list, memory, i);
    }
    const PortMemory& settings = memory.port[port];
    if (settings.pcp != 0) {
        Filter& filter = Add(list, FilterKind::kPriority, kPriorityAt);
        filter.vid = settings.vid;
        filter.tpid = memory.tpid;
        filter.pcp = settings.pcp;
    }
    if (list.count != before)
        Add(list, FilterKind::kTagged, kTaggedAt).tpid = memory.tpid;
    for (int i = 0; i < list.count; ++i)
        list.filter[i].toHardware = links[port].offloads;
    return list;
}

}  // namespace linux_switch
