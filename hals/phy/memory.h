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

// Why the settings are kept.
enum SettingsKept : uint32_t {
    kNotKept,
    kWhileDown,   // of a PHY in power-down, whose registers may not hold them
    kForBringUp,  // until a bring-up has given them back
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
    uint32_t linkDrops;
    uint32_t masterFaults;
    uint32_t linkWasUp;  // when register 1 was last read
    uint32_t toldMac;    // what the MAC was told last; 0: nothing since the bring-up
};

struct Memory {
    uint32_t magic;
    PhyMemory phy[EP_MAX_PHYS];
};
static_assert(sizeof(Memory) <= EP_HAL_PRIV_DATA_SIZE);
static_assert(sizeof(PhyMemory) == 56);

void FormatMemory(void* privateData);
// Null: no such PHY, or Init has not run.
PhyMemory* MemoryOf(int devIdx);

}  // namespace ieee8023
