// A scenario carried out once in a process of its own, with or without a fault.
#pragma once

#include <string>

#include "tests/robustness/fault_table.h"

namespace obtest {

struct Fault {
    std::string call = {};  // empty = none
    int nth = 1;
    int errorNumber = 0;
};

struct FaultyRun {
    bool ended = false;  // by itself
    int result = 0;
    int lock = 0;
    int lockAfterExit = 0;
    int again = 0;
    int opened = 0;       // descriptors more than before, after the call
    int openedAgain = 0;  // and after the same call once more
    Lines transcript = {};
};

FaultyRun RunOnce(const FaultScenario& scenario, const Fault& fault);

// The system calls of a transcript as call sites, in their order: "open 1", "ftok 1", "open 2".
struct CallSite {
    std::string call;
    int nth;
};
std::vector<CallSite> CallSites(const Lines& transcript);

}  // namespace obtest
