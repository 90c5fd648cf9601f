// Requests about the SoC's internal interfaces, nsgmii0 and nsgmii1: MII registers, the driver's
// private request, flags, and what programs such as ifconfig ask of any interface.
#pragma once

#include "virtual_board/board/board_side.h"
#include "virtual_board/seam/target.h"
#include "virtual_board/seam/verdict.h"

namespace vboard::seam {

bool IsInterfaceRequest(uint32_t request);

// An ioctl for which IsInterfaceRequest holds.
Verdict RequestOfInterface(const Target& target, BoardSide& board);

}  // namespace vboard::seam
