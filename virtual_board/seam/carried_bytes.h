// The bytes that a call of the send, receive, read or write kind carries, wherever its arguments
// have them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "virtual_board/seam/target.h"

namespace vboard::seam {

// What the caller sends. CallFails{EMSGSIZE} above the limit.
std::vector<uint8_t> CarriedBytes(const Target& target, size_t limit);

// Puts as much of the bytes where the caller receives as there is room for; how many.
size_t PutBytes(const Target& target, std::span<const uint8_t> bytes);

}  // namespace vboard::seam
