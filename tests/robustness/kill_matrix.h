// A caller dies at each point of a call: who gets the lock, what the record and the chip are then,
// what mends it.
#pragma once

#include <string>
#include <vector>

#include "tests/robustness/calls.h"
#include "tests/robustness/death.h"

namespace obtest {

// Compared with a call that nobody kills: nothing of it, a part of it, all of it.
enum class Share { kNone, kPart, kAll };

// What makes record and chip agree with a call that nobody kills, the lock being free.
enum class Mend { kNothingToDo, kSameCall, kDownAndUp, kNone };

struct Casualty {
    DeathPoint point;
    bool died = false;
    int lock = 0;  // right after the death
    Share record = Share::kNone;
    bool recovered = false;  // the lock was freed by an administrator, and nothing else changed
    Mend mend = Mend::kNone;
};

enum class Caller { kAttached, kNew };

// All points of an operation.
std::vector<Casualty> KillAtEachPoint(const ExportedCall& call, Caller caller);

// Counts over all points, as one line of the table in docs/reliability.md.
std::string TableLine(const std::string& name, const std::vector<Casualty>& casualties);

}  // namespace obtest
