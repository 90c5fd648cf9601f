// The slots called one after the other, by this program in the library's place.
#pragma once

#include <string>

#include "tools/orblink_hal_check/processes/probe.h"
#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

// Before anything is called.
Steps TableSweep(Family family);
// Init with memory of this program.
Steps InitSweep(Family family);
// Every slot twice in one process that has not called Init.
Steps OrdinarySweep(Family family, int devIdx);
Steps NullSweep(Family family, int devIdx);
Steps RangeSweep(Family family, int devIdx);
Steps BusSweep(Family family, int devIdx);
Steps WalkSweep(int devIdx);
// What one process sets or reads, and another one reads.
Steps SettingSweep(Family family, int devIdx);
Steps ReadingSweep(Family family, int devIdx);
// With private data of an Init that has failed.
Steps ZeroSweep(Family family, int devIdx);

}  // namespace halcheck
