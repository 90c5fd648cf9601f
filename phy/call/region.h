// The mapped region and the rest of what this process keeps of the PHY family.
#pragma once

#include "common/log.h"
#include "phy/ethphy_hal.h"

namespace orblink::phy {

using HalTable = struct ETHPHY_HalFuncs;

// Stands in an entry that no library was loaded for: slots 0 to 5 fail, the others are null.
extern const HalTable kNoHal;

struct Process {
    int semId = -1;
    PhyDeviceRegion* region = nullptr;
    const HalTable* halTables[EP_MAX_PHYS] = {&kNoHal, &kNoHal};
    int socket = -1;  // of the EPHAL_ services; kept open between calls
};

extern Process process;

// The region is shared with every process that can open it, so what is read from it may be
// anything. These bound it: a count above the capacity counts as 0, and so does one that cannot be
// read yet.
uint8_t PhyCount();

// Record of a PHY that the board has, or may have: below the capacity. Null when it is not, or
// while the region is not mapped.
PhyDeviceRecord* FindRecord(uint8_t devIdx);

// The same, with a line in the name of the caller when there is no record.
PhyDeviceRecord* RecordOrError(LogCaller caller, uint8_t devIdx);

}  // namespace orblink::phy
