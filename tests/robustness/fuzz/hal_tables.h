// HAL tables whose slots return and write what the input says.
#pragma once

namespace fuzz {

// For dlsym: the whole table of that name, or one with slots missing.
void* AnyTable(const char* name);

}  // namespace fuzz
