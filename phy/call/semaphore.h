// The one System V semaphore that serialises the PHY family across processes. Operations on it have
// no undo.
#pragma once

namespace orblink::phy {

// Opens the semaphore that ETHPHY_InitOnce created.
int _InitGlobalSem(int& semaphoreId);

// Creates it, held by the caller; fails while it exists.
int _CreateGlobalSem(int& semaphoreId);

// -1 takes, +1 releases. A set that is not there any more makes the process forget what it knows of
// the family.
int _System5SemOp(int semaphoreId, short operation);

}  // namespace orblink::phy
