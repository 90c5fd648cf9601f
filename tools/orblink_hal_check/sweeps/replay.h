// Bring-up, settings and restore, made by the real library in the order in which programs make them.
#pragma once

#include "tools/orblink_hal_check/processes/probe.h"
#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

// In the process that initialises the board: Init, bring-up with the defaults, settings, restore.
Steps FirstProcess(Family family);
// In a process that has not called Init: the restore again.
Steps SecondProcess(Family family);

}  // namespace halcheck
