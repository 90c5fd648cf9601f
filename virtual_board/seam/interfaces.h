// The SoC's internal interfaces as programs see them, whichever way they ask.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "virtual_board/board/board_side.h"

namespace vboard::seam {

inline constexpr int32_t kFirstInterface =
    0x6E730000;  // far from the indices that the kernel gives
inline constexpr int32_t kInterfaceMtu = 1500;
inline constexpr int32_t kInterfaceQueueLength = 1000;
inline constexpr size_t kHardwareAddressSize = 6;

std::optional<uint32_t> FindInterface(std::string_view name);
std::optional<uint32_t> FindInterface(int32_t index);

std::array<uint8_t, kHardwareAddressSize> HardwareAddress(uint32_t interface);

// Reply::result is the word of flags; IFF_RUNNING where the interface is up.
Reply InterfaceFlags(BoardSide& board, pid_t process, uint32_t interface);

}  // namespace vboard::seam
