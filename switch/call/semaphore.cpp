#include "switch/call/semaphore.h"

#include <cerrno>

#include "common/log.h"
#include "common/shared_names.h"
#include "switch/call/process_state.h"

namespace orblink::sw {
namespace {

constexpr const char* kKeyFile = OB_SWITCH_KEY_FILE;

// Without SEM_UNDO: the kernel would take this +1 back when the initialising process ends and leave
// the lock held for ever.
constexpr sembuf kReleaseForGood = {.sem_num = 0, .sem_op = +1, .sem_flg = 0};

}  // namespace

int _System5SemOp(int semaphoreId)
{
    const int error = errno;
    if (MeansSetIsGone(error))
        ForgetAttachment(semaphoreId);
    return OB_ERROR("semop() fail, errno=%d", error);
}

int _InitGlobalSem()
{
    const SemaphoreSet set = OpenSemaphoreSet(kKeyFile);
    switch (set.failed) {
        case SemaphoreStep::kOpen:
            return OB_ERROR("open() failed, errno=%d", set.error);
        case SemaphoreStep::kFtok:
            return OB_ERROR("ftok() failed, errno=%d", set.error);
        case SemaphoreStep::kSemget:
            return OB_ERROR("semget() failed, errno=%d", set.error);
        case SemaphoreStep::kDone:
            break;
    }
    process.semaphoreId.Set(set.id);
    return set.id;
}

int _CreateGlobalSem()
{
    const SemaphoreSet set = CreateSemaphoreSet(kKeyFile);
    switch (set.failed) {
        case SemaphoreStep::kOpen:
            return OB_ERROR("open() failed, errno=%d", set.error);
        case SemaphoreStep::kFtok:
            return OB_ERROR("ftok() failed, errno=%d", set.error);
        case SemaphoreStep::kSemget:
            return OB_ERROR("semget() failed, cannot create sem, errno=%d", set.error);
        case SemaphoreStep::kDone:
            break;
    }
    process.semaphoreId.Set(set.id);
    if (_System5SemOp(set.id, kReleaseForGood) != RC_OK)
        return OB_ERROR("_ApiGlobalUnLock() failed");
    return set.id;
}

}  // namespace orblink::sw
