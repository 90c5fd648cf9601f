// Whether the records of the shared regions can be what the library has written.
#pragma once

#include <string>
#include <vector>

#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"

namespace ctl {

// What is wrong, a sentence each; empty for a record that may be believed.
std::vector<std::string> RecordFaults(const SwitchDeviceRecord& record, unsigned device);
std::vector<std::string> RecordFaults(const PhyDeviceRecord& record, unsigned device);

// Fail with "the shared state is damaged", the first fault and what mends it.
void RequireSane(const SwitchDeviceRecord& record, unsigned device);
void RequireSane(const PhyDeviceRecord& record, unsigned device);

// An initialisation writes more than zeros, also on a board without devices.
bool IsBlank(const SwitchDeviceRegion& region);
bool IsBlank(const PhyDeviceRegion& region);

}  // namespace ctl
