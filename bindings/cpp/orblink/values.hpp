// Indices that cannot be taken for one another, and words for values.
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "common/iface.h"

namespace orblink {

enum class SwitchIndex : uint8_t {};
enum class PortIndex : uint8_t {};
enum class PhyIndex : uint8_t {};

// Where a mirror leads when there is none.
inline constexpr PortIndex kNoPort{0xFF};

enum class Speed : uint32_t {
    kUnknown = OB_SPEED_UNKNOWN,
    kAutoneg = OB_SPEED_AUTONEG,
    k10M = OB_SPEED_10M,
    k100M = OB_SPEED_100M,
    k1G = OB_SPEED_1G,
    k2G5 = OB_SPEED_2G5,
    k10G = OB_SPEED_10G,
};

enum class Duplex : uint32_t { kHalf = 0, kFull = 1 };

// What ORBLINK_InitOnce does beside making the lock and the region.
enum class Initialise : uint32_t { kEmpty = 0, kWithDefaults = 1 };

// Which configuration ORBLINK_ResetDisable applies.
enum class BringUp : int { kStored = 0, kDefaults = 1, kStoredUnchecked = 2 };

// What happens to the lock of a port's group.
enum class GroupLock : uint32_t { kRespect = 0, kLock = 1, kUnlock = 2 };

enum class Mapping : int { kRemove = 0, kAdd = 1 };

// Of ETHPHY_PhyZ88_SetSpeedDuplexMode, which numbers speeds in its own way.
enum class ForcedSpeed : uint32_t { k10M = 1, k100M = 2, k1G = 3, k2G5 = 4 };

// In transmission order.
using MacAddress = std::array<uint8_t, 6>;

// A link as the C call has written it.
struct Link {
    uint32_t up;
    uint32_t speed;
    uint32_t fullDuplex;

    bool IsUp() const { return up != 0; }
    orblink::Speed Speed() const { return static_cast<orblink::Speed>(speed); }
    orblink::Duplex Duplex() const
    {
        return fullDuplex != 0 ? orblink::Duplex::kFull : orblink::Duplex::kHalf;
    }
};

// The number that an index or a word stands for.
template <typename Word>
constexpr auto Number(Word word)
{
    return static_cast<std::underlying_type_t<Word>>(word);
}

}  // namespace orblink
