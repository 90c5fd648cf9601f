// The way into the library: is it there, is it free, did it do what it was asked.
#pragma once

#include <string>
#include <string_view>

#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"
#include "tools/orblinkctl/access/shared_state.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

inline constexpr double kUsualWait = 10;
void SetBusyWait(double seconds);

bool IsInitialised(Family family);

// Before each operation: fails when the family is not initialised, not allowed, or stays busy.
void Enter(Family family);

// Fails unless the operation returned 0.
void Check(int result, std::string_view object, const char* operation);

SwitchDeviceRegion ReadSwitches();
// The switch must be one of the board's.
const SwitchDeviceRecord& SwitchOf(const SwitchDeviceRegion& region, unsigned device);
// So must the port be one of the switch's.
void RequirePort(const SwitchDeviceRegion& region, PortId port);
// Why an operation of a switch that is not enabled is refused, with the command that mends it.
std::string DownText(const SwitchDeviceRecord& record, unsigned device);
unsigned PortCount(const SwitchDeviceRecord& record);
bool IsEnabled(const SwitchDeviceRecord& record);

PhyDeviceRegion ReadPhys();
const PhyDeviceRecord& PhyOf(const PhyDeviceRegion& region, unsigned device);

std::string SwitchObject(unsigned device);
std::string PortObject(PortId port);
std::string PhyObject(unsigned device);

}  // namespace ctl
