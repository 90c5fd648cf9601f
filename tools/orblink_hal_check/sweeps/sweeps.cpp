#include "tools/orblink_hal_check/sweeps/sweeps.h"

#include "tools/orblink_hal_check/processes/attachment.h"
#include "tools/orblink_hal_check/sweeps/calls.h"
#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/process_state.h"
#include "tools/orblink_hal_check/watch/slot_call.h"

namespace halcheck {

namespace {

void CheckTable(Family family)
{
    const auto slots = SlotsOf(family);
    const size_t size = slots.size() * sizeof(void (*)());
    const size_t found = SizeOfTable(family);
    if (found < size) {
        ReportOn("", "table.size",
                 std::string(TableSymbol(family)) + " has " + std::to_string(found) +
                     " bytes instead of " + std::to_string(size));
        return;
    }
    auto** const table = static_cast<void (**)()>(FindTable(family));
    for (size_t i = 0; i < slots.size(); ++i) {
        const std::string name = std::string("slot ") + std::to_string(i) + ", " + slots[i].name;
        if (table[i] == nullptr && slots[i].mandatory)
            ReportOn(slots[i].name, "table.missing-slot", name + ", is null");
        else if (table[i] != nullptr && !IsCode(reinterpret_cast<const void*>(table[i])))
            ReportOn(slots[i].name, "table.not-code", name + ", does not point to code");
    }
}

void CallInit(Family family)
{
    const bool isSwitch = family == Family::kSwitch;
    Guarded data{"Init", isSwitch ? size_t{OB_HAL_PRIV_DATA_SIZE} : size_t{EP_HAL_PRIV_DATA_SIZE},
                 0};
    const int result = isSwitch ? CallSlot(&SwitchTable::Init, data.As<void>())
                                : CallSlot(&PhyTable::Init, data.As<void>());
    data.CheckBeginning();
    if (result != 0)
        ReportOn("Init", "init.failed", "Init returned " + std::to_string(result));
}

void CallOrdinarily(const OrdinaryCall& call, Family family, int devIdx)
{
    const RegionUntouched region{family};
    for (const bool calledBefore : {false, true}) {
        const ProcessUntouched process{calledBefore};
        call.run(devIdx);
    }
}

void CallWithoutBus(const OrdinaryCall& call, int devIdx)
{
    if (call.run(devIdx) != 0 || AccessesOfLastCall() == 0)
        return;
    busFails = true;
    const int result = call.run(devIdx);
    busFails = false;
    if (result == 0 && AccessesOfLastCall() > 0)
        Report("bus.failure-hidden",
               std::string(TheWatch().call) + " succeeded while no register could be reached");
}

}  // namespace

Steps TableSweep(Family family)
{
    return {{"", "table.size", [=] { CheckTable(family); }}};
}

Steps InitSweep(Family family)
{
    return {{"Init", "slot.crash", [=] { CallInit(family); }}};
}

Steps OrdinarySweep(Family family, int devIdx)
{
    Steps steps;
    // What the first round keeps, the second one may use.
    for (int round = 0; round < 2; ++round)
        for (const OrdinaryCall& call : OrdinaryCalls(family))
            steps.push_back(
                {call.slot, "slot.crash", [=, &call] { CallOrdinarily(call, family, devIdx); }});
    return steps;
}

Steps NullSweep(Family family, int devIdx)
{
    Steps steps;
    for (const UnusualCall& call : NullPointerCalls(family))
        steps.push_back({call.slot, "null.crash", [=, &call] { call.run(devIdx); }});
    return steps;
}

Steps RangeSweep(Family family, int devIdx)
{
    Steps steps;
    for (const UnusualCall& call : OutOfRangeCalls(family))
        steps.push_back({call.slot, "range.crash", [=, &call] { call.run(devIdx); }});
    return steps;
}

Steps BusSweep(Family family, int devIdx)
{
    Steps steps;
    for (const OrdinaryCall& call : OrdinaryCalls(family))
        steps.push_back({call.slot, "slot.crash", [=, &call] { CallWithoutBus(call, devIdx); }});
    return steps;
}

Steps ZeroSweep(Family family, int devIdx)
{
    Steps steps;
    for (const OrdinaryCall& call : OrdinaryCalls(family))
        steps.push_back({call.slot, "private.zero-crashes", [=, &call] {
                             const ZeroedPrivateData zeroed{family, devIdx};
                             call.run(devIdx);
                         }});
    return steps;
}

}  // namespace halcheck
