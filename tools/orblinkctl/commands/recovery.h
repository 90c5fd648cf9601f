// Giving a family back to its users after a process has ended in the middle of it.
#pragma once

#include "tools/orblinkctl/access/diagnosis.h"

namespace ctl {

// Makes `init` possible again: removes the lock and the region. No process may be in a call.
void UndoInitialisation(Family family);

// Frees the lock when it is certain that the process that took it has ended.
void FreeAbandonedLock(Family family);

// Before anything of a family is made: fails when somebody else has put a region there.
void RequireOwnRegion(Family family);

}  // namespace ctl
