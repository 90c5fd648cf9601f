// What must outlive a call and reach other processes: the HAL's part of the shared memory.
#pragma once

#include <stdint.h>

#include "phy/ethphy_hal.h"

namespace ieee8023 {

// The registers that a reset loses.
struct Settings {
    uint16_t control;
    uint16_t advertisement;
    uint16_t gigabitControl;
    uint16_t multiGigControl;
    uint16_t eeeOffer;
    uint16_t eeeOffer2;
};

struct PhyMemory {
    uint32_t capsKnown;
    uint32_t caps;  // ETHPHY_IEEE8023_ capabilities, while known
    uint32_t settingsKept;
    Settings settings;  // while kept
    uint32_t idleErrors;
    uint32_t highBer;
    uint32_t erroredBlocks;
    uint32_t eeeWakeErrors;
};

struct Memory {
    uint32_t magic;
    PhyMemory phy[EP_MAX_PHYS];
};
static_assert(sizeof(Memory) <= EP_HAL_PRIV_DATA_SIZE);
static_assert(sizeof(PhyMemory) == 40);

void FormatMemory(void* privateData);
// Null: no such PHY, or Init has not run.
PhyMemory* MemoryOf(int devIdx);

}  // namespace ieee8023
