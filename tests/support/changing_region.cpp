#include "tests/support/changing_region.h"

#include <sys/mman.h>

#include "tests/support/watched_region.h"

namespace obtest {
namespace {

// What the watch's functions, which take no context, work on.
int seen;
int chosen;
const std::function<void()>* chosenChange;

void CountAndChange(const Mapping&)
{
    if (++seen == chosen)
        (*chosenChange)();
}

}  // namespace

int RunChangingAfter(int nth, const std::function<void()>& change,
                     const std::function<void()>& call)
{
    seen = 0;
    chosen = nth;
    chosenChange = &change;
    WatchRegions({PROT_NONE, [](const Mapping&, uintptr_t) {}, CountAndChange});
    call();
    StopWatching();
    return seen;
}

}  // namespace obtest
