// The slots of both tables: their names and, for each, the function that is put in its place, so that
// every call is seen whoever makes it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "phy/ethphy_hal.h"
#include "switch/orblink_hal.h"

namespace halcheck {

// The structs' own names are hidden by the data symbols of the same names.
using SwitchTable = struct OBHAL_HalFuncs;
using PhyTable = struct ETHPHY_HalFuncs;

enum class Family { kSwitch, kPhy };
inline constexpr Family kFamilies[] = {Family::kSwitch, Family::kPhy};

inline constexpr size_t kSwitchSlots = sizeof(SwitchTable) / sizeof(void (*)());
inline constexpr size_t kPhySlots = sizeof(PhyTable) / sizeof(void (*)());

struct Slot {
    const char* name;
    bool mandatory;
    void (*watched)();
};

std::span<const Slot> SlotsOf(Family family);
const char* TableSymbol(Family family);
const char* NameOf(Family family);
bool IsSlot(std::string_view name);

template <typename Table, typename Function>
size_t IndexOf(Function Table::*slot)
{
    static const Table table{};
    return static_cast<size_t>(reinterpret_cast<const char*>(&(table.*slot)) -
                               reinterpret_cast<const char*>(&table)) /
           sizeof(void (*)());
}

}  // namespace halcheck
