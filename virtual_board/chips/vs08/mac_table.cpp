#include "virtual_board/chips/vs08/mac_table.h"

#include <algorithm>

namespace vboard::vswitch {

using std::chrono::nanoseconds;

size_t MacTable::BucketOf(const MacAddress& mac, uint16_t vid)
{
    uint64_t key = vid;
    for (uint8_t octet : mac)
        key = key << 8 | octet;
    return (key * 0x9E3779B97F4A7C15u >> 32) % kBuckets;
}

int16_t MacTable::SlotOf(const MacAddress& mac, uint16_t vid) const
{
    int16_t slot = first[BucketOf(mac, vid)];
    while (slot != kNone && (entries[slot].mac != mac || entries[slot].vid != vid))
        slot = next[slot];
    return slot;
}

const MacTable::Entry* MacTable::Find(const MacAddress& mac, uint16_t vid) const
{
    const int16_t slot = SlotOf(mac, vid);
    return slot == kNone ? nullptr : &entries[slot];
}

int16_t MacTable::Insert(const MacAddress& mac, uint16_t vid)
{
    if (used.all())
        return kNone;
    size_t slot = 0;
    while (used[slot])
        ++slot;
    const size_t bucket = BucketOf(mac, vid);
    entries[slot] = {mac, vid, 0, false, {}};
    used[slot] = true;
    next[slot] = first[bucket];
    first[bucket] = static_cast<int16_t>(slot);
    return first[bucket];
}

void MacTable::Remove(size_t slot)
{
    int16_t* link = &first[BucketOf(entries[slot].mac, entries[slot].vid)];
    while (*link != static_cast<int16_t>(slot))
        link = &next[*link];
    *link = next[slot];
    used[slot] = false;
}

bool MacTable::Learn(const MacAddress& mac, uint16_t vid, unsigned port, nanoseconds now)
{
    int16_t slot = SlotOf(mac, vid);
    if (slot == kNone)
        slot = Insert(mac, vid);
    if (slot == kNone)
        return false;
    Entry& entry = entries[slot];
    if (!entry.isStatic) {
        entry.port = static_cast<uint8_t>(port);
        entry.seen = now;
    }
    return true;
}

bool MacTable::AddStatic(const MacAddress& mac, uint16_t vid, unsigned port)
{
    int16_t slot = SlotOf(mac, vid);
    if (slot == kNone)
        slot = Insert(mac, vid);
    if (slot == kNone)
        return false;
    entries[slot].isStatic = true;
    entries[slot].port = static_cast<uint8_t>(port);
    return true;
}

bool MacTable::Delete(const MacAddress& mac, uint16_t vid)
{
    const int16_t slot = SlotOf(mac, vid);
    if (slot != kNone)
        Remove(slot);
    return slot != kNone;
}

size_t MacTable::NextUsed(size_t slot) const
{
    while (slot < kSlots && !used[slot])
        ++slot;
    return slot;
}

void MacTable::Clear()
{
    used.reset();
    first.fill(kNone);
    next.fill(kNone);
}

void MacTable::Flush()
{
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        if (!entries[slot].isStatic)
            Remove(slot);
    }
}

void MacTable::FlushPort(unsigned port)
{
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        if (!entries[slot].isStatic && entries[slot].port == port)
            Remove(slot);
    }
}

void MacTable::Age(nanoseconds now, nanoseconds limit)
{
    if (now - oldestSeen < limit)
        return;
    oldestSeen = now;
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        const Entry& entry = entries[slot];
        if (entry.isStatic)
            continue;
        if (now - entry.seen >= limit)
            Remove(slot);
        else
            oldestSeen = std::min(oldestSeen, entry.seen);
    }
}

size_t MacTable::StaticCount() const
{
    size_t count = 0;
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1))
        count += entries[slot].isStatic ? 1 : 0;
    return count;
}

}  // namespace vboard::vswitch
