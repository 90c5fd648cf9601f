// The two families as they stand after initialisation and bring-up: one switch and one PHY, both
// enabled, with the HAL that does nothing. No board is needed for it, no rights, and a running
// system is not touched: locks and regions have names of this process.
#pragma once

#include "phy/ethphy_hal.h"
#include "switch/orblink_hal.h"

namespace bench {

constexpr uint8_t kSwitch = 0;
constexpr uint8_t kPhy = 0;
constexpr uint8_t kPort = 2;

class ReadyBoard {
public:
    ReadyBoard();
    ~ReadyBoard();
    ReadyBoard(const ReadyBoard&) = delete;
    ReadyBoard& operator=(const ReadyBoard&) = delete;

    // A semaphore of the same kind that the library does not know.
    int BareSemaphore() const { return bare_; }

private:
    SwitchDeviceRegion* switches_;
    PhyDeviceRegion* phys_;
    int switchLock_;
    int phyLock_;
    int bare_;
};

}  // namespace bench
