// The file that says which interface is which port of a switch.
#pragma once

#include <stddef.h>

#include "hals/linux_switch/memory.h"

namespace linux_switch {

// What is wrong with a mapping, and in which line of its text.
struct MappingFault {
    const char* what;  // null: nothing
    int line;
};

// Fills in what the text says. It is TOML of whole lines: keys with texts or numbers, and the table
// [ports] of interfaces by port number.
MappingFault ParseMapping(const char* text, size_t size, SwitchMemory& memory);

enum class Loaded { kYes, kNone, kFailed };

// Reads linux-switch-N.toml in /etc/orblink, or where ORBLINK_LINUX_SWITCH says; complains itself.
Loaded LoadMapping(int devIdx, SwitchMemory& memory);

}  // namespace linux_switch
