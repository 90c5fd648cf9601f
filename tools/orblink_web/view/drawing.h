// The board as a drawing: the SoC, its lanes, the switches with their ports, the PHYs.
#pragma once

#include <string>

#include "tools/orblink_web/view/traffic.h"
#include "tools/orblinkctl/access/model.h"

namespace web {

// One SVG for each device, so that they find room beside or below each other.
std::string Drawing(const ctl::Model& board, const Traffic& traffic);

}  // namespace web
