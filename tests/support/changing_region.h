// A shared region that changes between two accesses of the library, at a place that the test
// chooses: what another process's writes do once in a million calls happens in every run.
#pragma once

#include <functional>

namespace obtest {

// Runs the call with every instruction counted that touches the region; right after the n-th (1 =
// the first) `change` runs. Returns how many there were.
int RunChangingAfter(int nth, const std::function<void()>& change,
                     const std::function<void()>& call);

}  // namespace obtest
