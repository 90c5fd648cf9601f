// A board for both families over the scripted platform: one switch, one PHY.
#pragma once

#include "tests/phy/phy_fixture.h"
#include "tests/robustness/calls.h"
#include "tests/support/switch_fixture.h"

namespace obtest {

// HAL libraries and what their slots answer.
void ScriptBoard();

// The initialisation of a family, on board data of one device.
int Initialise(Family family);

// The initialisations in processes that have ended: this one has still to attach. The switch then
// stands in its record as enabled, the PHY as out of reset.
void InitialiseElsewhere();

// The family's semaphore: 1 free, 0 taken, -1 when there is none.
int LockValue(Family family);

// What an administrator does to a lock that a dead process holds, or after an initialisation that
// was killed.
void FreeLock(Family family);
void RemoveLock(Family family);

// The bytes of the family's shared region.
std::string RegionBytes(Family family);

}  // namespace obtest
