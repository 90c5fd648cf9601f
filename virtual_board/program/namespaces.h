// The private view of the machine that a board's processes get.
#pragma once

#include <string>

namespace vboard {

struct EnteredNamespaces {
    std::string refusal;  // why the machine does not allow it; else empty
    bool ofUser = false;  // inside a user namespace: rights count in it alone
};

// Leaves for private IPC and mount namespaces (inside a user namespace when that takes one), with
// empty /dev/shm and /var/tmp.
EnteredNamespaces EnterPrivateNamespaces();

}  // namespace vboard
