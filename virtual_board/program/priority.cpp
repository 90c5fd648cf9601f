#include "virtual_board/program/priority.h"

#include <sys/resource.h>

namespace vboard {

void GoBeforePrograms()
{
    constexpr int kBefore = 5;
    // Result dropped: without the right to it the board runs as it is.
    static_cast<void>(setpriority(PRIO_PROCESS, 0, getpriority(PRIO_PROCESS, 0) - kBefore));
}

}  // namespace vboard
