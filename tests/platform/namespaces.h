// Private IPC and mount namespaces, so that tests run in parallel and beside the real thing.
#pragma once

namespace obtest {

// Leaves this process alone with empty /dev/shm and /var/tmp and no System V semaphores, as root or
// through a user namespace. False, with the reason on standard error, when that is not allowed.
bool EnterPrivateNamespaces();

}  // namespace obtest
