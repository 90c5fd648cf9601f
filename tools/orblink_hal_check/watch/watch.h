// The memory that the program shares with the processes that call the library under test: what is
// being called, and what was found. It outlives them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

struct Found {
    char check[32];
    char slot[32];
    char what[256];
};

// Memory that the library must not touch, or not write to.
struct Zone {
    enum Kind : uint32_t { kPast, kReadOnly, kWithdrawn };

    uintptr_t begin;
    uintptr_t end;
    Kind kind;
    char slot[32];
};

struct Cost {
    uint32_t calls;
    uint32_t mostAccesses;
    uint64_t longest;  // microseconds, waits at their full length
};

struct Watch {
    static constexpr uint32_t kMostFound = 512;
    static constexpr uint32_t kMostZones = 512;

    // Of the process that runs now.
    uint32_t step;
    bool attached;
    bool finished;
    bool inSlot;
    char slot[32];
    char complaint[256];  // why the library could not be loaded
    char call[192];
    char failedCall[256];  // the last one that failed in this step
    int signal;
    uintptr_t faultAddress;
    uint32_t zoneCount;  // the last kMostZones of them are kept
    Zone zone[kMostZones];

    // Of all.
    uint32_t foundCount;
    Found found[kMostFound];
    Cost cost[2][kSwitchSlots];
    uint64_t limit;       // microseconds that a slot may take
    bool hasTable[2];     // by family
    bool initialised[2];  // by family
    uint8_t devices;
    bool restored[OB_MAX_DEVICES];
    // What another process reads again; of the device that is looked at.
    bool ledSet;
    bool testModeSet;
    bool capsRead;
    alignas(SwitchCaps) uint8_t caps[sizeof(SwitchCaps)];
};

Watch& TheWatch();

// Notes a finding about the slot that was called last, or about a given one.
void Report(const char* check, const std::string& what);
void ReportOn(const char* slot, const char* check, const std::string& what);

void AddZone(const void* begin, size_t size, Zone::Kind kind, const char* slot);
// The zone that an address lies in, or null.
const Zone* ZoneOf(uintptr_t address);

}  // namespace halcheck
