// One message of board data, as the mailbox brings it, into an initialisation of its family.
#pragma once

#include "tests/robustness/fuzz/platform.h"

namespace fuzz {

// The input is the message.
inline int Initialise(Family family, int (*initialise)(), const uint8_t* data, size_t size)
{
    FuzzedDataProvider nothing{data, 0};
    Scene scene{nothing, false};
    platform.message.assign(data, data + size);
    SpoilRegion(family);
    initialise();
    CheckReleased();
    return 0;
}

}  // namespace fuzz
