// The processes of this machine, as far as /proc shows them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ctl {

struct Process {
    pid_t id;
    std::string name;
    // Seconds since 1970, rounded down.
    int64_t started;
};

// None when there is no such process, or when it has ended and only waits for its parent.
std::optional<Process> FindProcess(pid_t id);

// Who has a file open or mapped, without this process.
struct FileUsers {
    std::vector<Process> processes;
    // Processes that this user may not look into: each could be one more.
    unsigned hidden = 0;
};
FileUsers UsersOf(dev_t device, ino_t inode);

}  // namespace ctl
