// Network namespaces without a name: a descriptor holds each, and they go with its process.
#pragma once

#include <sys/types.h>

#include <functional>

#include "virtual_board/board/unique_fd.h"

namespace vboard::cables {

// Makes a network namespace and runs the body in it; the caller stays where it is. The descriptor
// holds the namespace. Throws std::system_error, and what the body throws.
UniqueFd MakeNetwork(const std::function<void()>& body);

// Moves the calling process into the namespace that a descriptor of another process holds. Throws
// std::system_error.
void EnterNetwork(pid_t holder, int fd);

// Gives the calling process a /sys that shows the interfaces of its network namespace. Where mounts
// are not allowed it goes on showing those of the machine.
void ShowOwnInterfaces();

// Lets what this process executes next keep the rights that it has in the board's user namespace.
void KeepRightsAcrossExec();

}  // namespace vboard::cables
