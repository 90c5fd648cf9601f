// The counters of the VS08 model and the registers through which a host reads them.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

#include "virtual_board/chips/vs08/ports.h"
#include "virtual_board/chips/vs08/registers.h"

namespace vboard::vswitch {

inline constexpr size_t kCounters = 30;
inline constexpr uint16_t kCntFirst = 0x0300;
inline constexpr uint16_t kCntWindow = 0x0310;
inline constexpr uint16_t kCntLast = kCntWindow + 4 * kCounters - 1;

extern const std::array<std::string_view, kCounters> kCounterNames;

// Places of the counters that frames move, as the register manual numbers them.
enum CounterIndex : size_t {
    kDropEvents = 0,
    kOctets = 1,
    kPkts = 2,
    kBroadcastPkts = 3,
    kMulticastPkts = 4,
    kCrcAlignErrors = 5,
    kUndersizePkts = 6,
    kOversizePkts = 7,
    kFragments = 8,
    kJabbers = 9,
    kCollisions = 10,
    kPkts64 = 11,
    kPkts1519ToMax = 17,
    kFramesSent = 18,
    kOctetsSent = 19,
    kMulticastSent = 20,
    kBroadcastSent = 21,
    kFramesReceived = 22,
    kOctetsReceived = 23,
    kPauseSent = 24,
    kPauseReceived = 25,
    kInDiscards = 26,
    kVlanInDiscards = 27,
    kMtuDiscards = 28,
    kOutDiscards = 29,
};

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
    void Count(unsigned port, CounterIndex counter, uint64_t value = 1)
    {
        values_[port][counter] += value;
    }
    const std::array<uint64_t, kCounters>& OfPort(unsigned port) const { return values_[port]; }

private:
    bool Busy() const { return doneAt_.has_value(); }

    std::array<std::array<uint64_t, kCounters>, kPorts> values_{};
    std::array<uint64_t, kCounters> window_{};
    uint16_t command_ = 0;
    std::optional<std::chrono::nanoseconds> doneAt_;
};

}  // namespace vboard::vswitch
