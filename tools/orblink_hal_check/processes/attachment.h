// This process's part in the board: liborblink's regions as it has mapped them.
#pragma once

#include <vector>

#include "phy/ethphy_records.h"
#include "switch/orblink_records.h"
#include "tools/orblink_hal_check/processes/probe.h"
#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

bool Enter(Entry entry);

SwitchDeviceRegion& Switches();
PhyDeviceRegion& Phys();

// What a HAL library must leave alone: notes it, and looks at it again when it goes.
class RegionUntouched {
public:
    explicit RegionUntouched(Family family);
    ~RegionUntouched();
    RegionUntouched(const RegionUntouched&) = delete;
    RegionUntouched& operator=(const RegionUntouched&) = delete;

private:
    std::vector<uint8_t> Outside() const;

    Family family_;
    std::vector<uint8_t> before_;
};

// The private data of a device's library are zero for as long as it lives.
class ZeroedPrivateData {
public:
    ZeroedPrivateData(Family family, int devIdx);
    ~ZeroedPrivateData();
    ZeroedPrivateData(const ZeroedPrivateData&) = delete;
    ZeroedPrivateData& operator=(const ZeroedPrivateData&) = delete;

private:
    uint8_t* data_;
    std::vector<uint8_t> kept_;
};

}  // namespace halcheck
