// Bits of the standard PHY registers that more than one file of the model needs.
#pragma once

#include <cstdint>

namespace vboard::phy {

inline constexpr uint16_t kNobodyAnswers = 0xFFFF;

// Register 0, and in the same places 1.0, 3.0 and 7.0 as far as these have the bit.
inline constexpr uint16_t kReset = 0x8000;
inline constexpr uint16_t kSpeedLow = 0x2000;
inline constexpr uint16_t kNegotiate = 0x1000;
inline constexpr uint16_t kPowerDown = 0x0800;
inline constexpr uint16_t kRestart = 0x0200;
inline constexpr uint16_t kFullDuplex = 0x0100;
inline constexpr uint16_t kSpeedHigh = 0x0040;

// The link status bit of register 1, and of 1.1, 3.1 and 7.1.
inline constexpr uint16_t kLinkStatus = 0x0004;

// Register 4 and 5.
inline constexpr uint16_t kSelector = 0x0001;
inline constexpr uint16_t kAcknowledge = 0x4000;
inline constexpr unsigned kTechnologyShift = 5;  // 10 half, 10 full, 100 half, 100 full

// Register 9.
inline constexpr uint16_t kManualMaster = 0x1000;
inline constexpr uint16_t kMasterValue = 0x0800;
inline constexpr uint16_t kMultiport = 0x0400;

// 7.32
inline constexpr uint16_t kOffers2500 = 0x0080;

// 7.60 and 7.61; 7.62, 7.63 and 3.21
inline constexpr uint16_t kEee100 = 0x0002;
inline constexpr uint16_t kEee1000 = 0x0004;
inline constexpr uint16_t kEee2500 = 0x0001;

inline constexpr char kReservedBit[] = "reserved bit set";
inline constexpr char kReadOnly[] = "read-only register";
inline constexpr char kNoRegister[] = "no such register";
inline constexpr char kNoMode[] = "mode that the PHY lacks";
inline constexpr char kNoAbility[] = "ability that the PHY lacks";

}  // namespace vboard::phy
