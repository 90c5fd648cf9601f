// The lock of a family, held by this program itself for a few instructions.
#pragma once

#include "tools/orblinkctl/access/shared_state.h"

namespace ctl {

// The kernel frees the lock when the program ends in between, also where the library's own calls
// would leave it taken.
class HeldLock {
public:
    // Fails with "busy" when the lock does not come in time.
    HeldLock(Family family, int semaphore, double seconds);
    ~HeldLock();
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

private:
    int semaphore_;
};

}  // namespace ctl
