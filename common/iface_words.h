// The words that log lines use for interface modes and speeds.
#pragma once

#include <cstdint>

namespace orblink {

// "UNKNOWN" for a mode or speed that has no word of its own.
const char* IfaceModeWord(uint32_t mode);
const char* IfaceSpeedWord(uint32_t speed);

// Port operations write the same codes another way; "Illegal" for a code above 6.
const char* PortSpeedWord(uint32_t speed);

}  // namespace orblink
