// Every access of the library to its mappings of the shared regions, one by one: the mappings are
// protected, and each instruction that touches them is stepped over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace obtest {

// A mapping of the library's.
struct Mapping {
    uintptr_t first;
    size_t size;
};

struct RegionWatch {
    int protection;  // PROT_READ: writes are watched; PROT_NONE: reads, too
    // Right before and after the instruction, with the region writable.
    void (*before)(const Mapping& mapping, uintptr_t address);
    void (*after)(const Mapping& mapping) = nullptr;
};

// To be called before the library maps anything: the mappings that exist are the test's own.
void ExcludeOwnMappings();

// From now on, in this process.
void WatchRegions(const RegionWatch& watch);

// Takes mappings under watch that the library has made in the meantime.
void WatchNewMappings();

// The same, for each line of a transcript: looks only where something has just been mapped.
void FollowMappings(const std::string& line);

void StopWatching();

}  // namespace obtest
