#include "virtual_board/chips/vs08/global.h"

#include "virtual_board/chips/vs08/counters.h"
#include "virtual_board/chips/vs08/mac_table.h"
#include "virtual_board/chips/vs08/mac_vlan.h"
#include "virtual_board/chips/vs08/qos.h"

namespace vboard::vswitch {
namespace {

constexpr uint16_t kCapsEee = 1 << 1;
constexpr uint16_t kCapsMirror = 1 << 2;
constexpr uint16_t kMaxPercent = 100;

constexpr RegisterSpec kIdentity[] = {
    {kCaps, kCapsEee | kCapsMirror | kPorts << 4, 0, 0, 0},
    {kFdbSize, MacTable::kSlots, 0, 0, 0},
    {kQueueCount, kQueues | kQueues / kPorts << 8, 0, 0, 0},
    {kBuffers, 4096, 0, 0, 0},
    {kCounterCount, kCounters, 0, 0, 0},
    {kMacVlanSize, kMacVlanEntries, 0, 0, 0},
};
constexpr RegisterSpec kSettings[] = {
    {kForwardCtrl, 0, 1, 0, 1},
    {kProviderCtrl, 0, 1, 0, 1},
    {kProviderTpid, 0x88A8, 0xFFFF, 0x0600, 0xFFFF},
    {kAgeing, 3, 7, 1, 5},
    {kMtu, 2000, 0xFFFF, 64, 10240},
    {kSnooping, 0, 3, 0, 3},
    {kLedMode, 3, 7, 0, 7},
    {kLinkChange, 0, 0x00FF, 0, 0x00FF},
    {kFdbRefused, 0, 0, 0, 0},
};
constexpr RegisterSpec kWred[] = {
    {kWredCtrl, 0x6440, 0x7FF1, 0, 0x7FF1},
    {kWredThresholds, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kWredThresholds + 1, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kWredThresholds + 2, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kWredThresholds + 3, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kWredThresholds + 4, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kWredThresholds + 5, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
};

unsigned PercentOf(uint16_t wredCtrl)
{
    return wredCtrl >> 8 & 0x7F;
}

}  // namespace

GlobalRegisters::GlobalRegisters(unsigned internal)
    : internalPort_(internal), identity_(kIdentity), settings_(kSettings), wred_(kWred)
{
    Reset();
}

void GlobalRegisters::Reset()
{
    identity_.Reset();
    identity_.Set(kCaps, static_cast<uint16_t>(identity_[kCaps] | internalPort_ << 8));
    settings_.Reset();
    wred_.Reset();
}

Refusal GlobalRegisters::Read(uint16_t address, uint16_t& value)
{
    const Refusal refusal = Peek(address, value);
    if (address == kFdbRefused)
        settings_.Set(kFdbRefused, 0);
    return refusal;
}

Refusal GlobalRegisters::Peek(uint16_t address, uint16_t& value) const
{
    if (address < kForwardCtrl)
        return identity_.Read(address, value);
    return address < kWredCtrl ? settings_.Read(address, value) : wred_.Read(address, value);
}

Refusal GlobalRegisters::Write(uint16_t address, uint16_t value)
{
    if (address < kForwardCtrl)
        return identity_.Write(address, value);
    if (address == kWredCtrl && !wred_.Check(address, value) && PercentOf(value) > kMaxPercent)
        return kOutOfRange;
    if (address >= kWredCtrl)
        return wred_.Write(address, value);
    if (address == kLinkChange && !settings_.Check(address, value))
        value = settings_[kLinkChange] & ~value;
    return settings_.Write(address, value);
}

uint16_t GlobalRegisters::Get(GlobalRegister address) const
{
    uint16_t value = 0;
    Peek(address, value);
    return value;
}

uint16_t GlobalRegisters::WredThreshold(unsigned index) const
{
    return wred_[static_cast<uint16_t>(kWredThresholds + index)];
}

std::chrono::seconds GlobalRegisters::AgeLimit() const
{
    constexpr int kSeconds[] = {15, 75, 300, 1200, 4800};
    return std::chrono::seconds(kSeconds[settings_[kAgeing] - 1]);
}

void GlobalRegisters::NoteLinkChange(uint16_t ports)
{
    settings_.Set(kLinkChange, settings_[kLinkChange] | ports);
}

void GlobalRegisters::NoteFdbRefused()
{
    const uint16_t count = settings_[kFdbRefused];
    if (count != 0xFFFF)
        settings_.Set(kFdbRefused, count + 1);
}

}  // namespace vboard::vswitch
