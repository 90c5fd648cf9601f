// The chip models by their names in the board file.
#pragma once

#include <vector>

#include "virtual_board/board/mdio_controller.h"

namespace vboard {

// "sw0", "sw1", "phy0", "phy1", with their links as the board file has them. The wiring stays the
// board's.
std::vector<Device> MakeDevices(const BoardDescription& spec);

}  // namespace vboard
