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
    int16_t slot = first_[BucketOf(mac, vid)];
    while (slot != kNone && (entries_[slot].mac != mac || entries_[slot].vid != vid))
        slot = next_[slot];
    return slot;
}

const MacTable::Entry* MacTable::Find(const MacAddress& mac, uint16_t vid) const
{
    const int16_t slot = SlotOf(mac, vid);
    return slot == kNone ? nullptr : &entries_[slot];
}

int16_t MacTable::Insert(const MacAddress& mac, uint16_t vid)
{
    if (used_.all())
        return kNone;
    size_t slot = 0;
    while (used_[slot])
        ++slot;
    const size_t bucket = BucketOf(mac, vid);
    entries_[slot] = {mac, vid, 0, false, {}};
    used_[slot] = true;
    next_[slot] = first_[bucket];
    first_[bucket] = static_cast<int16_t>(slot);
    return first_[bucket];
}

void MacTable::Remove(size_t slot)
{
    int16_t* link = &first_[BucketOf(entries_[slot].mac, entries_[slot].vid)];
    while (*link != static_cast<int16_t>(slot))
        link = &next_[*link];
    *link = next_[slot];
    used_[slot] = false;
}

bool MacTable::Learn(const MacAddress& mac, uint16_t vid, unsigned port, nanoseconds now)
{
    int16_t slot = SlotOf(mac, vid);
    if (slot == kNone)
        slot = Insert(mac, vid);
    if (slot == kNone)
        return false;
    Entry& entry = entries_[slot];
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
    entries_[slot].isStatic = true;
    entries_[slot].port = static_cast<uint8_t>(port);
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
    while (slot < kSlots && !used_[slot])
        ++slot;
    return slot;
}

void MacTable::Clear()
{
    used_.reset();
    first_.fill(kNone);
    next_.fill(kNone);
}

void MacTable::Flush()
{
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        if (!entries_[slot].isStatic)
            Remove(slot);
    }
}

void MacTable::FlushPort(unsigned port)
{
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        if (!entries_[slot].isStatic && entries_[slot].port == port)
            Remove(slot);
    }
}

void MacTable::Age(nanoseconds now, nanoseconds limit)
{
    if (now - oldestSeen_ < limit)
        return;
    oldestSeen_ = now;
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1)) {
        const Entry& entry = entries_[slot];
        if (entry.isStatic)
            continue;
        if (now - entry.seen >= limit)
            Remove(slot);
        else
            oldestSeen_ = std::min(oldestSeen_, entry.seen);
    }
}

size_t MacTable::StaticCount() const
{
    size_t count = 0;
    for (size_t slot = NextUsed(0); slot < kSlots; slot = NextUsed(slot + 1))
        count += entries_[slot].isStatic ? 1 : 0;
    return count;
}

}  // namespace vboard::vswitch
