#include "phy/call/process_state.h"

namespace orblink::phy {

constinit ProcessState process;

void ForgetAttachment(int semaphoreId)
{
    if (process.semaphoreId.Get() != semaphoreId)
        return;  // another thread has met the same error and attached anew
    process.attached = false;
    process.semaphoreId.Forget(semaphoreId);
}

}  // namespace orblink::phy
