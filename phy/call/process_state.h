// What one process knows of the PHY family; nothing of it is shared with other processes.
#pragma once

#include "common/atomic.h"
#include "common/kept_id.h"
#include "phy/ethphy_hal.h"

namespace orblink::phy {

// The struct's own name is hidden by the data symbol of the same name.
using HalTable = struct ETHPHY_HalFuncs;

// Stands in an entry that no library was loaded for: slots 0 to 5 fail, the others are null.
extern const HalTable kNoHal;

// Written with the family's semaphore held, but for what ForgetAttachment does. Threads look at the
// semaphore id and, in the services, at the region without it; the id orders nothing else, the
// semaphore that it names does.
struct alignas(kPageSize) ProcessState {
    KeptId semaphoreId;                                   // none until created or opened
    Atomic<bool> attached = false;                        // the region and the tables are in force
    Atomic<PhyDeviceRegion*> region = nullptr;            // the one mapped last; never unmapped
    Atomic<const HalTable*> halTables[EP_MAX_PHYS] = {};  // kNoHal from the first mapping on
    KeptId socket;  // of the services, which run with the semaphore held
};

extern constinit ProcessState process;

// After the semaphore set was removed: the next call attaches anew. A thread that is inside a call
// goes on with the mapping and the libraries that it has, so both stay.
void ForgetAttachment(int semaphoreId);

}  // namespace orblink::phy
