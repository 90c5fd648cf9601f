// The counters of the VS08 model and the registers through which a host reads them.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

#include "virtual_board/vswitch_ports.h"
#include "virtual_board/vswitch_registers.h"

namespace vboard::vswitch {

inline constexpr size_t kCounters = 30;
inline constexpr uint16_t kCntFirst = 0x0300;
inline constexpr uint16_t kCntWindow = 0x0310;
inline constexpr uint16_t kCntLast = kCntWindow + 4 * kCounters - 1;

extern const std::array<std::string_view, kCounters> kCounterNames;

class Counters {
public:
    void Reset();
    void Advance(std::chrono::nanoseconds now);

    Refusal Read(uint16_t address, uint16_t& value) const;
    // The same without the rules of a command in progress.
    Refusal Peek(uint16_t address, uint16_t& value) const;
    Refusal Write(uint16_t address, uint16_t value, std::chrono::nanoseconds now);

    // False: no such counter.
    bool Add(unsigned port, std::string_view name, uint64_t value);
    const std::array<uint64_t, kCounters>& OfPort(unsigned port) const { return values[port]; }

private:
    bool Busy() const { return doneAt.has_value(); }

    std::array<std::array<uint64_t, kCounters>, kPorts> values{};
    std::array<uint64_t, kCounters> window{};
    uint16_t command = 0;
    std::optional<std::chrono::nanoseconds> doneAt;
};

}  // namespace vboard::vswitch
