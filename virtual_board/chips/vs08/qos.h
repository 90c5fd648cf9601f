// The queues of the VS08 model.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtual_board/chips/vs08/registers.h"

namespace vboard::vswitch {

inline constexpr unsigned kQueues = 64;
inline constexpr uint16_t kQueueFirst = 0x2000;
inline constexpr uint16_t kQueueLast = kQueueFirst + 8 * kQueues - 1;
inline constexpr uint16_t kMaxThreshold = 0x0FFF;

class Queues {
public:
    struct Settings {
        std::array<uint16_t, 6> thresholds;  // minimum and maximum of green, yellow and red
        uint16_t reserved;
        bool operator==(const Settings&) const = default;
    };
    static constexpr Settings kResetSettings = {
        {kMaxThreshold, kMaxThreshold, kMaxThreshold, kMaxThreshold, kMaxThreshold, kMaxThreshold},
        0};

    Queues();

    void Reset();
    Refusal Read(uint16_t address, uint16_t& value) const;
    Refusal Write(uint16_t address, uint16_t value);
    Settings At(unsigned queue) const;

private:
    std::vector<RegisterBank> queues_;
};

}  // namespace vboard::vswitch
