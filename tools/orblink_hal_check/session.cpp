#include "tools/orblink_hal_check/session.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tools/orblink_hal_check/processes/board.h"
#include "tools/orblink_hal_check/report/result.h"
#include "tools/orblink_hal_check/sweeps/calls.h"
#include "tools/orblink_hal_check/sweeps/replay.h"
#include "tools/orblink_hal_check/sweeps/sweeps.h"
#include "tools/orblink_hal_check/watch/hal.h"

namespace halcheck {

namespace {

// Which tables the library has, found out in a process of its own.
bool FindFamilies(const ProbeRules& rules, bool (&has)[2])
{
    Watch& watch = TheWatch();
    const Steps look{{"", "slot.crash", [&watch] {
                          for (const Family family : kFamilies)
                              watch.hasTable[family == Family::kPhy] = FindTable(family) != nullptr;
                      }}};
    if (!RunSteps(rules, Entry::kLoad, look))
        return false;
    std::ranges::copy(watch.hasTable, has);
    return true;
}

class Session {
public:
    explicit Session(const SessionOrder& order)
        : order_(order), rules_{order.library, std::chrono::milliseconds(order.patience)}
    {
    }

    bool Run(Result& result)
    {
        bool has[2] = {};
        if (!FindFamilies(rules_, has))
            return false;
        for (const Family family : kFamilies) {
            if (!has[family == Family::kPhy])
                continue;
            result.families.emplace_back(NameOf(family));
            CheckFamily(family, result);
        }
        Collect(result);
        return true;
    }

private:
    void CheckFamily(Family family, Result& result)
    {
        const bool isPhy = family == Family::kPhy;
        const Entry attached = isPhy ? Entry::kAttachToPhys : Entry::kAttachToSwitches;
        const uint32_t before = TheWatch().foundCount;
        RunSteps(rules_, Entry::kLoad, TableSweep(family));
        const auto* const first = TheWatch().found + before;
        const auto* const last = TheWatch().found + TheWatch().foundCount;
        if (std::any_of(first, last, [](const Found& found) {
                return std::string_view{found.check} == "table.size";
            })) {
            result.notes.emplace_back("with a table this short nothing could be called");
            return;
        }
        RunSteps(rules_, Entry::kWatch, FirstProcess(family));
        if (!TheWatch().initialised[isPhy]) {
            result.notes.push_back(std::string("the ") + NameOf(family) +
                                   " family could not be initialised: its slots were not called");
            return;
        }
        RunSteps(rules_, attached, SecondProcess(family));
        RunSteps(rules_, attached, Chosen(InitSweep(family)));
        const int devices = DevicesOf(family);
        for (int devIdx = 0; devIdx < devices; ++devIdx)
            SweepDevice(family, attached, devIdx);
        for (int devIdx = 0; devIdx < devices; ++devIdx)
            RunSteps(rules_, attached, Chosen(ZeroSweep(family, devIdx)));
    }

    void SweepDevice(Family family, Entry attached, int devIdx)
    {
        if (family == Family::kSwitch)
            TeachAddresses(devIdx);
        for (const auto& sweep :
             {OrdinarySweep, NullSweep, RangeSweep, SettingSweep, ReadingSweep, BusSweep})
            RunSteps(rules_, attached, Chosen(sweep(family, devIdx)));
        if (family == Family::kSwitch)
            RunSteps(rules_, attached, Chosen(WalkSweep(devIdx)));
    }

    int DevicesOf(Family family)
    {
        Watch& watch = TheWatch();
        const Steps count{{"", "slot.crash", [&watch, family] {
                               if (family == Family::kSwitch)
                                   ORBLINK_GetNumOfSwitches(&watch.devices);
                               else
                                   ETHPHY_GetNumOfPhys(&watch.devices);
                           }}};
        watch.devices = 0;
        RunSteps(rules_, Entry::kWatch, count);
        return watch.devices;
    }

    Steps Chosen(Steps steps) const
    {
        if (!order_.onlySlot.empty())
            std::erase_if(steps, [&](const Step& step) { return order_.onlySlot != step.slot; });
        return steps;
    }

    static void Collect(Result& result)
    {
        const Watch& watch = TheWatch();
        for (uint32_t i = 0; i < watch.foundCount; ++i)
            result.Add(watch.found[i].check, watch.found[i].slot, watch.found[i].what);
        for (const Family family : kFamilies) {
            const auto slots = SlotsOf(family);
            for (size_t i = 0; i < slots.size(); ++i) {
                const Cost& cost = watch.cost[family == Family::kPhy][i];
                if (cost.calls != 0)
                    result.times.push_back({NameOf(family), slots[i].name, cost.calls,
                                            cost.mostAccesses, cost.longest});
            }
        }
    }

    const SessionOrder& order_;
    ProbeRules rules_;
};

}  // namespace

int RunSession(const SessionOrder& order)
{
    Result result;
    result.library = order.library;
    TheWatch().limit = order.limit;
    if (order.counters != 0)
        countersSize = order.counters;
    if (!Session{order}.Run(result)) {
        const char* const complaint = TheWatch().complaint;
        fprintf(stderr, "orblink-hal-check: %s\n",
                complaint[0] != '\0' ? complaint : "the process ended while it loaded the library");
        return EXIT_FAILURE;
    }
    std::ofstream file{order.result};
    file << ToJson(result);
    file.close();
    return file ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace halcheck
