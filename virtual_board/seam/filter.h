// The filter under which the board's programs run: which of their system calls the board is asked
// about. It is part of every program from its start and is inherited.
#pragma once

#include <linux/filter.h>

#include <vector>

namespace vboard::seam {

struct FilterOptions {
    bool scaledTime = false;    // sleeps do not have their real length
    bool privateNames = false;  // shared memory and semaphores have names of the board's own
};

std::vector<sock_filter> BuildFilter(const FilterOptions& options);

}  // namespace vboard::seam
