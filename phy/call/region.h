// The region, which any process that can open it may have spoilt: what is read from it to index or
// to count by is read once and bounded here.
#pragma once

#include "common/read_once.h"
#include "phy/call/process_state.h"

namespace orblink::phy {

// The stored number of PHYs; 0 when the region holds a number that cannot be.
inline uint8_t PhyCount(const PhyDeviceRegion& region)
{
    const uint8_t count = ReadOnce(region.NumOfPhys);
    return count <= EP_MAX_PHYS ? count : uint8_t{0};
}

// The same for the services: 0 while the region is not mapped.
uint8_t PhyCount();

// Record of a PHY that the board has, or may have: below the capacity. Null when it is not, or
// while the region is not mapped.
PhyDeviceRecord* FindRecord(uint8_t devIdx);

// The region, mapped and in force from now on; null with a line of EP_MapEthphyDevices. Before the
// first mapping the shared-memory service has to run.
PhyDeviceRegion* MapRegion();

// Starts that service, once per process; negative when it fails.
int StartSharedMemoryService();

}  // namespace orblink::phy
