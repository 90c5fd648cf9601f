// The walk of the MAC table, with callbacks that look at what they are given.
#include <cstdint>

#include "tools/orblink_hal_check/sweeps/sweeps.h"
#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

constexpr int kMostEntries = 100'000;

struct Walk {
    bool going;
    bool stopped;
    uint32_t contextWord;
    int entries;
};

Walk walk;

uint32_t See(MacEntry* entry, bool goOn)
{
    if (!walk.going)
        Report("walk.late-callback", "the callback was called after ForEachMacEntry had returned");
    if (walk.stopped)
        Report("walk.goes-on", "ForEachMacEntry went on after the callback had returned 0");
    if (entry == nullptr)
        Report("walk.null-entry", "ForEachMacEntry handed out a null entry");
    else if (entry->contextWord != walk.contextWord)
        Report("walk.context", "the context word is " + std::to_string(entry->contextWord) +
                                   " instead of " + std::to_string(walk.contextWord));
    // One line says it; an endless walk is ended.
    const bool wrong = entry == nullptr || entry->contextWord != walk.contextWord;
    walk.stopped = walk.stopped || !goOn || wrong || ++walk.entries > kMostEntries;
    return walk.stopped ? 0 : 1;
}

uint32_t SeeAndGoOn(MacEntry* entry)
{
    return See(entry, true);
}

uint32_t SeeAndStop(MacEntry* entry)
{
    return See(entry, false);
}

void WalkTable(int devIdx, MacEntryCallback callback, void* context)
{
    walk = {true, false, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(context)), 0};
    CallSlot(&SwitchTable::ForEachMacEntry, devIdx, callback, context);
    walk.going = false;
}

void WalkAll(int devIdx)
{
    static MacTable table;
    WalkTable(devIdx, SeeAndGoOn, nullptr);
    WalkTable(devIdx, SeeAndGoOn, &table);
}

void WalkOne(int devIdx)
{
    WalkTable(devIdx, SeeAndStop, nullptr);
}

// Slots that look at the table or change it.
void CallOthers(int devIdx)
{
    CallSlot(&SwitchTable::PrintMachineState, devIdx);
    CallSlot(&SwitchTable::SetMacAging, devIdx, 3);
}

}  // namespace

Steps WalkSweep(int devIdx)
{
    return {{"ForEachMacEntry", "slot.crash", [=] { WalkAll(devIdx); }},
            {"ForEachMacEntry", "slot.crash", [=] { WalkOne(devIdx); }},
            {"ForEachMacEntry", "slot.crash", [=] { CallOthers(devIdx); }}};
}

}  // namespace halcheck
