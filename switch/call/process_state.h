// What one process knows of the switch family; nothing of it is shared with other processes.
#pragma once

#include "common/atomic.h"
#include "common/kept_id.h"
#include "switch/orblink_hal.h"

namespace orblink::sw {

// The struct's own name is hidden by the data symbol of the same name.
using HalTable = struct OBHAL_HalFuncs;

// Written with the family's semaphore held, but for what ForgetAttachment does. Threads look at the
// semaphore id and, in the services, at the region without it; the id orders nothing else, the
// semaphore that it names does.
struct alignas(kPageSize) ProcessState {
    KeptId semaphoreId;                            // none until created or opened
    Atomic<bool> attached = false;                 // the region and the tables are in force
    Atomic<SwitchDeviceRegion*> region = nullptr;  // the one mapped last; never unmapped
    Atomic<const HalTable*> halTables[OB_MAX_SWITCHES] = {};
    // The table that the walk in progress fills. An entry carries only the low 32 bits of its
    // address, so the pointer itself is kept here, beside what each call touches anyway.
    MacTable* walkTable = nullptr;
};

extern constinit ProcessState process;

// Puts a mapping in force; tables of an attachment that was forgotten go.
void Attach(SwitchDeviceRegion* region);

// After the semaphore set was removed: the next call attaches anew. A thread that is inside a call
// goes on with the mapping and the tables that it has, so both stay.
void ForgetAttachment(int semaphoreId);

}  // namespace orblink::sw
