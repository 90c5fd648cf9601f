#include "phy/call/process_state.h"

namespace orblink::phy {

constinit ProcessState process;

void ForgetAttachment(int semaphoreId)
{
    if (process.semaphoreId.load(std::memory_order_relaxed) != semaphoreId)
        return;  // another thread has met the same error and attached anew
    process.attached = false;
    process.semaphoreId.compare_exchange_strong(semaphoreId, -1, std::memory_order_release,
                                                std::memory_order_relaxed);
}

}  // namespace orblink::phy
