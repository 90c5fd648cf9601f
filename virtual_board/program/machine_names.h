// The machine's own names of what the library shares: for a board whose command is to meet programs
// outside, or where names of its own cannot be given.
#pragma once

#include <sys/types.h>

#include "virtual_board/board/unique_fd.h"

namespace vboard {

// One board at a time has the names, and only while nothing else stands under them. What stands there
// when the board ends is removed, even when the board is killed.
class MachineNames {
public:
    // Throws std::runtime_error that says what uses the names.
    MachineNames();
    MachineNames(const MachineNames&) = delete;
    MachineNames& operator=(const MachineNames&) = delete;
    ~MachineNames();

private:
    void StartKeeper();

    UniqueFd lock_;
    UniqueFd alive_;
    pid_t keeper_ = -1;
};

}  // namespace vboard
