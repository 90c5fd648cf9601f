// One call of each kind, as they are measured.
#pragma once

#include <span>

#include "bench/ready_board.h"

namespace bench {

struct CallClass {
    const char* name;
    void (*call)();
};

// The first one does nothing: what the measuring itself costs.
std::span<const CallClass> CallClasses(const ReadyBoard& board);

// After all were called.
bool CallsReachedTheHal();

}  // namespace bench
