// The command that runs on a board, as a child under the seam's filter.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/seam/entry.h"

namespace vboard {

inline constexpr int kExitNotExecutable = 126;
inline constexpr int kExitNotFound = 127;

// Becomes the command; what it returns is the exit status when that is not possible.
int Execute(std::vector<std::string> command);

class CommandProcess {
public:
    // `prepare` runs in the child, before the filter. Throws std::runtime_error.
    CommandProcess(const std::vector<std::string>& command, const seam::FilterOptions& filter,
                   const std::function<void()>& prepare);

    int SignalFd() const { return signals_.Get(); }
    int ExitStatus() const { return exitStatus_; }

    // Through which the kernel asks about the command's calls. Once.
    UniqueFd TakeListener() { return std::move(entered_.listener); }
    bool WithoutPrivileges() const { return entered_.withoutPrivileges; }

    // Passes on what has arrived; true once the command has ended.
    bool HandleSignals();

private:
    bool Reap();

    pid_t pid_ = -1;
    UniqueFd signals_;
    seam::Entered entered_{};
    int exitStatus_ = 1;
};

}  // namespace vboard
