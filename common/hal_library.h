// A HAL library and the table that it exports.
#pragma once

namespace orblink {

enum class HalStep { kDone, kOpen, kSymbol };

struct HalLibrary {
    const void* table;   // null unless done
    HalStep failed;      // kDone, or the step that failed
    int error;           // its errno
    const char* reason;  // the loader's words, never null
};

// Loads the library and looks up its table. A library once loaded stays for the life of the process,
// also when it lacks the table: callers keep pointers into it.
HalLibrary LoadHalLibrary(const char* name, const char* tableSymbol);

}  // namespace orblink
