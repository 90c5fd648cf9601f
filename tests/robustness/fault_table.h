// One system call of one call site fails once: what the caller gets, what is logged, what is left.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/robustness/calls.h"
#include "tests/support/transcript.h"

namespace obtest {

// A call that was not tried again: it would wait for ever.
inline constexpr int kNotTried = -99;

// A place where the library makes a system call, and what the failure of that call does. Texts:
// {e} stands for the error number, {t} for its text. Lines of severity 1 that a healthy run logs,
// too, are left out.
struct FaultRow {
    const char* call;
    int nth;  // of the calls of that name in the scenario
    int result;
    Lines errors = {};
    const char* printed = "";  // on standard output, by the mailbox client
    int lock = 1;              // value of the family's lock afterwards
    int again = 0;             // result of the same call of the same process, right afterwards
    int leftOpen = 0;          // descriptors that stay open by intention
    int lockAfterExit = 1;     // value of the lock when the process has ended
};

// Before a call: nothing is there; initialised by another process; this process has attached.
enum class Before { kNothing, kInitialised, kAttached };

struct FaultScenario {
    const char* name;
    Family family;
    Before before;
    int (*run)();
    std::vector<FaultRow> rows;
};

const std::vector<FaultScenario>& SwitchFaults();
const std::vector<FaultScenario>& PhyFaults();
const std::vector<FaultScenario>& MailboxFaults();

void PrintTo(const FaultScenario& scenario, std::ostream* out);

}  // namespace obtest
