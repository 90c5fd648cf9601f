// The private view of the machine that a board's processes get.
#pragma once

#include <string>

namespace vboard {

// Leaves for private IPC and mount namespaces (inside a user namespace when that takes one), with
// empty /dev/shm and /var/tmp. Empty, or why the machine refuses that.
std::string EnterPrivateNamespaces();

}  // namespace vboard
