// Brings a bridge and its ports to their defaults. Only what the mapping names is touched.
#pragma once

#include <stdint.h>

namespace linux_switch {

// A slot's result. A reset that fails gives back the interfaces that it took, and leaves no bridge
// that it made.
int Reset(int devIdx, uint8_t isolation);

}  // namespace linux_switch
