// The board data as the application CPU puts it on the wire.
#pragma once

#include <cstdint>
#include <vector>

#include "virtual_board/description/board_description.h"

namespace vboard {

inline constexpr uint32_t kSwitchMessage = 10;
inline constexpr uint32_t kPhyMessage = 11;
inline constexpr size_t kMessageHeaderSize = 8;
inline constexpr size_t kSwitchPayloadSize = 176;
inline constexpr size_t kPhyPayloadSize = 120;
inline constexpr uint8_t kAcknowledgement[kMessageHeaderSize] = {0, 0, 0, 12, 0, 0, 0, 0};

// Header and payload, big-endian.
std::vector<uint8_t> BoardDataMessage(const BoardDescription& spec, Family family);

// Where the number of devices stands in a message of the family.
size_t DeviceCountOffset(Family family);

void PutWord(std::vector<uint8_t>& bytes, size_t offset, uint32_t value);

}  // namespace vboard
