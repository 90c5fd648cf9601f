// The semaphore that serialises the PHY calls of all processes. Operations on it have no undo.
#pragma once

namespace orblink::phy {

// Opens the semaphore that ETHPHY_InitOnce created.
int _InitGlobalSem();

// Creates it, held by the caller; fails when it exists.
int _CreateGlobalSem();

// -1 takes, +1 releases.
int _System5SemOp(short op);

}  // namespace orblink::phy
