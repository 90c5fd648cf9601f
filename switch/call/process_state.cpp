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
    if (process.semaphoreId.load(std::memory_order_relaxed) != semaphoreId)
        return;  // another thread has met the same error and attached anew
    process.attached = false;
    process.semaphoreId.compare_exchange_strong(semaphoreId, -1, std::memory_order_release,
                                                std::memory_order_relaxed);
}

}  // namespace orblink::sw
