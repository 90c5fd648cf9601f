// The private view of the machine that a board's processes get.
#pragma once

namespace vboard {

// Leaves for private IPC and mount namespaces (inside a user namespace when that takes one), with
// empty /dev/shm and /var/tmp. False where the machine refuses that.
bool TryPrivateNamespaces();

}  // namespace vboard
