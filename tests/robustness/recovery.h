// What an administrator does about a family whose caller has died: `orblinkctl recover --apply`.
#pragma once

#include "tests/robustness/calls.h"

namespace obtest {

// Builds without the programs have nothing to recover with.
bool CanRecover();

// The command's exit code. Forced: also where its holder is not known for certain.
enum class Certainty { kRequired, kForced };
int Recover(Family family, Certainty certainty);

}  // namespace obtest
