// The MAC table of the VS08 model: entries that keep their slot, found by address and VLAN.
#pragma once

#include <array>
#include <bitset>
#include <chrono>
#include <cstdint>

#include "virtual_board/description/mac_address.h"

namespace vboard::vswitch {

class MacTable {
public:
    static constexpr size_t kSlots = 2048;

    struct Entry {
        MacAddress mac{};
        uint16_t vid = 0;
        uint8_t port = 0;
        bool isStatic = false;
        std::chrono::nanoseconds seen{};
    };

    MacTable() { Clear(); }

    // A frame from this address arrived. False: every slot is taken.
    bool Learn(const MacAddress& mac, uint16_t vid, unsigned port, std::chrono::nanoseconds now);
    // False: every slot is taken.
    bool AddStatic(const MacAddress& mac, uint16_t vid, unsigned port);
    // False: no such entry.
    bool Delete(const MacAddress& mac, uint16_t vid);
    const Entry* Find(const MacAddress& mac, uint16_t vid) const;

    // The first used slot at or above this one; kSlots when there is none.
    size_t NextUsed(size_t slot) const;
    const Entry& At(size_t slot) const { return entries_[slot]; }

    void Clear();
    // Removes what is not static: all of it, or that of one port.
    void Flush();
    void FlushPort(unsigned port);
    // Removes what was not seen for this long.
    void Age(std::chrono::nanoseconds now, std::chrono::nanoseconds limit);

    size_t Count() const { return used_.count(); }
    size_t StaticCount() const;

private:
    static constexpr int16_t kNone = -1;
    static constexpr size_t kBuckets = 2048;

    static size_t BucketOf(const MacAddress& mac, uint16_t vid);
    int16_t SlotOf(const MacAddress& mac, uint16_t vid) const;
    int16_t Insert(const MacAddress& mac, uint16_t vid);
    void Remove(size_t slot);

    std::array<Entry, kSlots> entries_{};
    std::bitset<kSlots> used_;
    std::array<int16_t, kBuckets> first_{};
    std::array<int16_t, kSlots> next_{};
    std::chrono::nanoseconds oldestSeen_{};  // at or before that of every entry that can age
};

}  // namespace vboard::vswitch
