#include "tools/orblink_hal_check/watch/slot_call.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/ob_platform.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

PlatformUse platformUse;
bool busFails = false;

namespace {

uint32_t accessesOfLastCall = 0;

uint64_t Microseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<uint64_t>(now.tv_nsec) / 1'000;
}

bool IsOfApi(const char* function)
{
    return strncmp(function, "ORBLINK_", 8) == 0 || strncmp(function, "ETHPHY_", 7) == 0;
}

// A function that was not let in says so.
void HearLine(const OBPLAT_LogSite*, const char* function, const char*, va_list)
{
    if (TheWatch().inSlot && platformUse.tookLock && IsOfApi(function))
        snprintf(platformUse.calledBack, sizeof platformUse.calledBack, "%s", function);
}

}  // namespace

uint32_t AccessesOfLastCall()
{
    return accessesOfLastCall;
}

void ListenToLog()
{
    OBPLAT_SetLogHandler(HearLine);
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_ERROR);
}

SlotCall::SlotCall(Family family, size_t slot, const std::string& arguments)
    : family_(family), slot_(slot)
{
    Watch& watch = TheWatch();
    const char* const name = SlotsOf(family)[slot].name;
    snprintf(watch.slot, sizeof watch.slot, "%s", name);
    snprintf(watch.call, sizeof watch.call, "%s(%s)", name, arguments.c_str());
    platformUse = {};
    watch.inSlot = true;
    start_ = Microseconds();
}

SlotCall::~SlotCall()
{
    TheWatch().inSlot = false;
}

int SlotCall::Ended(int result)
{
    Watch& watch = TheWatch();
    const uint64_t passed = Microseconds() - start_;
    watch.inSlot = false;
    accessesOfLastCall = platformUse.accesses;
    // Waits count as long as they are on a real board, whatever the time scale.
    const uint64_t taken = passed - std::min(passed, platformUse.waited) + platformUse.asked;
    Cost& cost = watch.cost[family_ == Family::kPhy][slot_];
    ++cost.calls;
    cost.mostAccesses = std::max(cost.mostAccesses, platformUse.accesses);
    cost.longest = std::max(cost.longest, taken);
    if (taken > watch.limit)
        Report("slot.too-slow",
               std::string(watch.call) + " took " + std::to_string(taken / 1000) + " ms");
    if (platformUse.tookLock)
        Report("lock.reentry",
               std::string(watch.call) + " called " +
                   (platformUse.calledBack[0] != '\0' ? platformUse.calledBack : "the API"));
    if (result != 0)
        snprintf(watch.failedCall, sizeof watch.failedCall, "%s, which returned %d", watch.call,
                 result);
    return result;
}

}  // namespace halcheck
