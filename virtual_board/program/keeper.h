// Between a board and its command stands a process that ends what the command has started.
#pragma once

#include <signal.h>

#include <functional>

namespace vboard {

// The signals that reach the command when they are sent to the board.
inline constexpr int kForwarded[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2};
inline constexpr int kExitSignalled = 128;

// In a child of the board, with the board's signals blocked: runs the command in a process of its
// own, with the given mask, and passes signals on to it. When the command or the board has ended,
// however that was, ends all that is left of the command's children, and then itself, with the
// command's exit status (128 + n when signal n ended it).
[[noreturn]] void KeepCommand(pid_t board, const sigset_t& mask,
                              const std::function<void()>& command);

}  // namespace vboard
