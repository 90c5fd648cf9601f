#include "tools/orblink_hal_check/watch/watch.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace halcheck {

namespace {

Watch* MakeWatch()
{
    void* memory =
        // cppcheck-suppress invalidFunctionArg ; what is mapped is no file
        mmap(nullptr, sizeof(Watch), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        perror("orblink-hal-check: mmap");
        exit(EXIT_FAILURE);
    }
    return static_cast<Watch*>(memory);
}

}  // namespace

Watch& TheWatch()
{
    static Watch* const watch = MakeWatch();
    return *watch;
}

void Report(const char* check, const std::string& what)
{
    ReportOn(TheWatch().slot, check, what);
}

void ReportOn(const char* slot, const char* check, const std::string& what)
{
    Watch& watch = TheWatch();
    if (watch.foundCount == Watch::kMostFound)
        return;
    Found& found = watch.found[watch.foundCount++];
    snprintf(found.check, sizeof found.check, "%s", check);
    snprintf(found.slot, sizeof found.slot, "%s", slot);
    snprintf(found.what, sizeof found.what, "%s", what.c_str());
}

void AddZone(const void* begin, size_t size, Zone::Kind kind, const char* slot)
{
    Watch& watch = TheWatch();
    Zone& zone = watch.zone[watch.zoneCount++ % Watch::kMostZones];
    zone.begin = reinterpret_cast<uintptr_t>(begin);
    zone.end = zone.begin + size;
    zone.kind = kind;
    snprintf(zone.slot, sizeof zone.slot, "%s", slot);
}

const Zone* ZoneOf(uintptr_t address)
{
    const Watch& watch = TheWatch();
    const uint32_t first =
        watch.zoneCount > Watch::kMostZones ? watch.zoneCount - Watch::kMostZones : 0;
    // The latest one counts: a buffer becomes a withdrawn one.
    for (uint32_t i = watch.zoneCount; i > first; --i) {
        const Zone& zone = watch.zone[(i - 1) % Watch::kMostZones];
        if (address >= zone.begin && address < zone.end)
            return &zone;
    }
    return nullptr;
}

}  // namespace halcheck
