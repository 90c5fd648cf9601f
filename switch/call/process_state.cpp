#include "switch/call/process_state.h"

namespace orblink::sw {

constinit ProcessState process;

void Attach(SwitchDeviceRegion* region)
{
    if (!process.attached)
        for (auto& table : process.halTables)
            table = nullptr;
    process.region = region;
    process.attached = true;
}

void ForgetAttachment(int semaphoreId)
{
    if (process.semaphoreId.Get() != semaphoreId)
        return;  // another thread has met the same error and attached anew
    process.attached = false;
    process.semaphoreId.Forget(semaphoreId);
}

}  // namespace orblink::sw
