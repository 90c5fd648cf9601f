#include "virtual_board/chips/vs08/counters.h"

#include <algorithm>

namespace vboard::vswitch {
namespace {

using std::chrono::nanoseconds;

constexpr uint16_t kCommandPort = 0x0007;
constexpr uint16_t kCommandBits = 0x0037;
constexpr uint16_t kSnapshot = 1;
constexpr uint16_t kClear = 2;
constexpr uint16_t kCommandBusy = 1 << 15;
constexpr nanoseconds kCommandTime = std::chrono::microseconds(20);

uint16_t OpOf(uint16_t command)
{
    return command >> 4;
}

}  // namespace

constexpr std::array<std::string_view, kCounters> kCounterNames = {
    "etherStatsDropEvents",
    "etherStatsOctets",
    "etherStatsPkts",
    "etherStatsBroadcastPkts",
    "etherStatsMulticastPkts",
    "etherStatsCRCAlignErrors",
    "etherStatsUndersizePkts",
    "etherStatsOversizePkts",
    "etherStatsFragments",
    "etherStatsJabbers",
    "etherStatsCollisions",
    "etherStatsPkts64Octets",
    "etherStatsPkts65to127Octets",
    "etherStatsPkts128to255Octets",
    "etherStatsPkts256to511Octets",
    "etherStatsPkts512to1023Octets",
    "etherStatsPkts1024to1518Octets",
    "etherStatsPkts1519toMaxOctets",
    "aFramesTransmittedOK",
    "aOctetsTransmittedOK",
    "aMulticastFramesXmittedOK",
    "aBroadcastFramesXmittedOK",
    "aFramesReceivedOK",
    "aOctetsReceivedOK",
    "aPAUSEMACCtrlFramesTransmitted",
    "aPAUSEMACCtrlFramesReceived",
    "dot1dTpPortInDiscards",
    "dot1qTpVlanPortInDiscards",
    "dot1dBasePortMtuExceededDiscards",
    "ifOutDiscards",
};

void Counters::Reset()
{
    *this = {};
}

void Counters::Advance(nanoseconds now)
{
    if (!doneAt_ || now < *doneAt_)
        return;
    doneAt_.reset();
    auto& ofPort = values_[command_ & kCommandPort];
    if (OpOf(command_) == kSnapshot)
        window_ = ofPort;
    else
        ofPort.fill(0);
}

Refusal Counters::Read(uint16_t address, uint16_t& value) const
{
    if (Busy() && address >= kCntWindow && address <= kCntLast)
        return kBusy;
    return Peek(address, value);
}

Refusal Counters::Peek(uint16_t address, uint16_t& value) const
{
    if (address == kCntFirst) {
        value = static_cast<uint16_t>(command_ | (Busy() ? kCommandBusy : 0));
        return nullptr;
    }
    if (address < kCntWindow || address > kCntLast)
        return kUnknownAddress;
    const unsigned word = address - kCntWindow;
    value = static_cast<uint16_t>(window_[word / 4] >> 16 * (word % 4));
    return nullptr;
}

Refusal Counters::Write(uint16_t address, uint16_t value, nanoseconds now)
{
    if (address >= kCntWindow && address <= kCntLast)
        return kReadOnly;
    if (address != kCntFirst)
        return kUnknownAddress;
    if (Busy())
        return kBusy;
    if (value & ~kCommandBits)
        return kReservedBit;
    if (OpOf(value) != kSnapshot && OpOf(value) != kClear)
        return kOutOfRange;
    command_ = value;
    doneAt_ = now + kCommandTime;
    return nullptr;
}

bool Counters::Add(unsigned port, std::string_view name, uint64_t value)
{
    const auto* found = std::ranges::find(kCounterNames, name);
    if (port >= kPorts || found == kCounterNames.end())
        return false;
    values_[port][static_cast<size_t>(found - kCounterNames.begin())] += value;
    return true;
}

}  // namespace vboard::vswitch
