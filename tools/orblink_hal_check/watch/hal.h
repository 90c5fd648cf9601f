// The library under test as it is loaded in this process, its tables patched so that every call is
// watched, also those that liborblink makes.
#pragma once

#include <string>

#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

// False, with the loader's words, when it cannot be loaded or has no table.
bool LoadHal(const std::string& name, std::string& complaint);

// What the library has under the table's symbol, or null.
void* FindTable(Family family);
// Size of that symbol.
size_t SizeOfTable(Family family);
bool IsCode(const void* address);

// From here on all calls are watched.
bool WatchTable(Family family);

// The table as the library came with it.
template <typename Table>
Table& RealTable()
{
    static Table table{};
    return table;
}

// Calls a slot through the patched table; fails when it is null.
template <typename Table, typename... Params>
int CallSlot(int (*Table::*slot)(Params...), std::type_identity_t<Params>... args)
{
    constexpr bool kIsSwitch = std::is_same_v<Table, SwitchTable>;
    const auto* table =
        static_cast<const Table*>(FindTable(kIsSwitch ? Family::kSwitch : Family::kPhy));
    return table->*slot != nullptr ? (table->*slot)(args...) : -1;
}

}  // namespace halcheck
