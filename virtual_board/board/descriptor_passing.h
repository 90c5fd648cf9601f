// Packets over a Unix socket that may carry a descriptor.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>

#include "virtual_board/board/unique_fd.h"

namespace vboard {

// Without a descriptor when it is -1. False with errno.
bool SendWithDescriptor(int socket, const void* data, size_t size, int descriptor);

struct Received {
    ssize_t size = -1;  // 0: the other end is closed; -1 with errno
    UniqueFd descriptor = {};
};
Received ReceiveWithDescriptor(int socket, void* into, size_t size);

}  // namespace vboard
