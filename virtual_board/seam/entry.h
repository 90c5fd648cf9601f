// How a process that was just made comes under the filter: it installs it, hands the listener to
// its maker, and goes on when that has found the listener good. Nothing is left half-way.
#pragma once

#include <sys/types.h>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/seam/filter.h"

namespace vboard::seam {

// The two ends of the talk; each process closes the other's.
struct EntryChannel {
    EntryChannel();  // throws std::system_error

    UniqueFd maker;
    UniqueFd entrant;
};

// In the new process. False when the maker gave it up: then it has nothing to do any more.
bool EnterSeam(EntryChannel& channel, const FilterOptions& options);

struct Entered {
    UniqueFd listener;
    bool withoutPrivileges;  // programs get no set-user-id rights and no file capabilities
};

// In the maker. Throws std::runtime_error that says in one line what is missing.
Entered AwaitEntry(EntryChannel& channel);

}  // namespace vboard::seam
