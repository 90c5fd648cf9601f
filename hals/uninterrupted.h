// A register access that a signal cut short before it reached the bus: it is made again.
#pragma once

#include <errno.h>

namespace hals {

// Not for ever: the library's lock is held.
constexpr int kMostTries = 100;

// Whether the access, which returns 0 for that, was done.
template <typename Access>
bool Uninterrupted(Access access)
{
    for (int i = 0; i < kMostTries; ++i) {
        errno = 0;
        if (access() == 0)
            return true;
        if (errno != EINTR)
            break;
    }
    return false;
}

}  // namespace hals
