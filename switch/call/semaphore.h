// The one System V semaphore that serialises the switch family across processes.
#pragma once

#include "common/result.h"
#include "common/semaphore_set.h"

namespace orblink::sw {

// Opens the existing semaphore. Its id, or one below 0.
[[gnu::cold, gnu::noinline]] int _InitGlobalSem();

// Creates it, free; fails while it exists. Its id, or one below 0.
[[gnu::cold]] int _CreateGlobalSem();

inline constexpr sembuf kTake = {.sem_num = 0, .sem_op = -1, .sem_flg = SEM_UNDO};
inline constexpr sembuf kRelease = {.sem_num = 0, .sem_op = +1, .sem_flg = SEM_UNDO};

// How it ends when semop has failed, in the operation's own name. A set that is not there any more
// makes the process forget what it knows of the family.
[[gnu::cold, gnu::noinline]] int _System5SemOp(int semaphoreId);

[[gnu::always_inline]] inline int _System5SemOp(int semaphoreId, const sembuf& change)
{
    return OperateSemaphore(semaphoreId, change) ? RC_OK : _System5SemOp(semaphoreId);
}

[[gnu::always_inline]] inline int _ApiGlobalLock(int semaphoreId)
{
    return _System5SemOp(semaphoreId, kTake);
}

[[gnu::always_inline]] inline int _ApiGlobalUnLock(int semaphoreId)
{
    return _System5SemOp(semaphoreId, kRelease);
}

}  // namespace orblink::sw
