// The one System V semaphore that serialises the PHY family across processes. Operations on it have
// no undo.
#pragma once

#include <sys/sem.h>

namespace orblink::phy {

// Opens the semaphore that ETHPHY_InitOnce created. Its id, or one below 0.
[[gnu::cold, gnu::noinline]] int _InitGlobalSem();

// Creates it, held by the caller; fails while it exists. Its id, or one below 0.
[[gnu::cold]] int _CreateGlobalSem();

constexpr sembuf kTake = {.sem_num = 0, .sem_op = -1, .sem_flg = 0};
constexpr sembuf kRelease = {.sem_num = 0, .sem_op = +1, .sem_flg = 0};

// A set that is not there any more makes the process forget what it knows of the family.
int _System5SemOp(int semaphoreId, const sembuf& change);

}  // namespace orblink::phy
