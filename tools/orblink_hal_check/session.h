// The part of the program that runs on the board: calls the library under test and writes down what
// came of it.
#pragma once

#include <cstdint>
#include <string>

namespace halcheck {

struct SessionOrder {
    std::string library;  // as the loader and the board data name it
    std::string onlySlot;
    uint64_t limit;      // microseconds that a slot may take
    int patience;        // milliseconds until a call counts as hanging
    uint32_t counters;   // bytes of a device's counters; 0: not known
    std::string result;  // the file that it is written to
};

// The exit code of the process; what was found is in the file.
int RunSession(const SessionOrder& order);

}  // namespace halcheck
