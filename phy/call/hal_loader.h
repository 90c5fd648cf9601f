// The HAL libraries of this process.
#pragma once

#include <type_traits>

#include "common/result.h"
#include "phy/call/process_state.h"

namespace orblink::phy {

// Loads the library of each PHY, each library once. Entries start anew from kNoHal.
[[gnu::cold]] int _LoadHals(const PhyDeviceRegion& region);

// Table of a PHY; null while its HAL index is none, or when loading left nothing in its entry.
const HalTable* FindHal(uint8_t devIdx);

// Calls one slot. What is not there, table or slot, counts as a slot that failed.
template <typename... SlotArgs>
int CallSlot(uint8_t devIdx, int (*HalTable::*slot)(int, SlotArgs...),
             std::type_identity_t<SlotArgs>... args)
{
    const HalTable* const hal = FindHal(devIdx);
    const auto function = hal == nullptr ? nullptr : hal->*slot;
    return function != nullptr && function(devIdx, args...) == 0 ? RC_OK : RC_ERROR;
}

}  // namespace orblink::phy
