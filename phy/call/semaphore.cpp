#include "phy/call/semaphore.h"

#include <cerrno>

#include "common/log.h"
#include "common/semaphore_set.h"
#include "common/shared_names.h"
#include "phy/call/process_state.h"

namespace orblink::phy {
namespace {

constexpr const char* kKeyFile = OB_PHY_KEY_FILE;

}  // namespace

int _InitGlobalSem()
{
    const SemaphoreSet set = OpenSemaphoreSet(kKeyFile);
    switch (set.failed) {
        case SemaphoreStep::kOpen:
            return EP_ERROR("open() failed, errno=%d", set.error);
        case SemaphoreStep::kFtok:
            return EP_ERROR("ftok() failed, errno=%d", set.error);
        case SemaphoreStep::kSemget:
            return EP_ERROR("semget() failed, errno=%d", set.error);
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
            return EP_ERROR("open() failed, errno=%d", set.error);
        case SemaphoreStep::kFtok:
            return EP_ERROR("ftok() failed, errno=%d", set.error);
        case SemaphoreStep::kSemget:
            return EP_ERROR("semget() failed, cannot create sem, errno=%d", set.error);
        case SemaphoreStep::kDone:
            break;
    }
    process.semaphoreId.Set(set.id);
    return set.id;
}

int _System5SemOp(int semaphoreId, const sembuf& change)
{
    if (OperateSemaphore(semaphoreId, change))
        return RC_OK;
    const int error = errno;
    if (MeansSetIsGone(error))
        ForgetAttachment(semaphoreId);
    return EP_ERROR("semop() fail, errno=%d", error);
}

}  // namespace orblink::phy
