// What the calls of the stat family tell about a file, in the layout that each of them has.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <vector>

#include "virtual_board/seam/system_calls.h"

namespace vboard::seam {

// `facts` as the caller's call hands them out. i386: the caller's ABI.
std::vector<uint8_t> StatBytes(const struct statx& facts, Call call, bool i386);

}  // namespace vboard::seam
