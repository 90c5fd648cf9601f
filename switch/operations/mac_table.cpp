#include <cstring>

#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr uint32_t kStopWalk = 0;
constexpr uint32_t kGoOn = 1;

uint32_t ContextWord(const MacTable* table)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(table));
}

class Walk {
public:
    explicit Walk(MacTable* table) { process.walkTable = table; }
    ~Walk() { process.walkTable = nullptr; }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
};

uint32_t _AddMacToOutputTable(MacEntry* entry)
{
    if (entry == nullptr)
        return kGoOn;
    MacTable* const table = process.walkTable;
    if (table == nullptr || entry->contextWord != ContextWord(table))
        return kStopWalk;
    if (table->count >= OB_MAC_TABLE_ENTRIES) {
        table->overflow = 1;
        return kGoOn;
    }
    if (memcpy_s(&table->entry[table->count], sizeof(MacEntry), entry, sizeof(MacEntry)) != 0) {
        OB_ERROR("Runtime-constraint violation error in function kova_memcpy_s");
        return kStopWalk;
    }
    ++table->count;
    return kGoOn;
}

}  // namespace

int ORBLINK_ForEachMacEntry(uint8_t DevIdx, MacEntryCallback Callback)
{
    OB_TRACE("");
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::ForEachMacEntry, Callback, nullptr) != RC_OK)
        return OB_ERROR("ForEachMacEntry failed, DevIdx=%d", DevIdx);
    return RC_OK;
}

int ORBLINK_GetMacTable(uint8_t DevIdx, struct MacTable* Table)
{
    OB_TRACE("");
    if (Table == nullptr)
        return OB_ERROR("MacTable is NULL");
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    memset(Table, 0, sizeof(*Table));
    const Walk walk{Table};
    if (call.Hal(&HalTable::ForEachMacEntry, _AddMacToOutputTable, Table) != RC_OK)
        return OB_ERROR("ForEachMacEntry failed, DevIdx=%d", DevIdx);
    return RC_OK;
}
