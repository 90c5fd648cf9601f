// Sleeps on a board whose time does not run as fast as the clock.
#pragma once

#include "virtual_board/seam/target.h"
#include "virtual_board/seam/verdict.h"

namespace vboard::seam {

// nanosleep() and clock_nanosleep(). A sleep until a point of time stays as it is: the clocks that
// programs read are not scaled.
Verdict ScaledSleep(const Target& target, double scale);

}  // namespace vboard::seam
