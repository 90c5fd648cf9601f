// One switch: its record and its HAL. The record lies in shared memory that any process can have
// spoilt, so what is read from it to index or to count by is bounded here.
#pragma once

#include <type_traits>

#include "common/read_once.h"
#include "common/result.h"
#include "switch/call/process_state.h"

namespace orblink::sw {

// The stored number of switches; 0 when the region holds a number that cannot be.
[[gnu::always_inline]] inline uint8_t SwitchCount(const SwitchDeviceRegion& region)
{
    const uint8_t count = ReadOnce(region.NumOfSwitches);
    return count <= OB_MAX_SWITCHES ? count : uint8_t{0};
}

// The HAL table that a record names; null when this process has loaded none for it.
[[gnu::always_inline]] inline const HalTable* FindTable(const SwitchDeviceRecord& record)
{
    const uint8_t halIdx = ReadOnce(record.halIdx);
    return halIdx < OB_MAX_SWITCHES ? process.halTables[halIdx].load() : nullptr;
}

// What one call works on from its prolog to its end, whatever other threads do meanwhile.
class SwitchDevice {
public:
    // No switch: false, and nothing may be asked of it.
    SwitchDevice() = default;

    // idx is below OB_MAX_SWITCHES.
    [[gnu::always_inline]] SwitchDevice(SwitchDeviceRegion& region, uint8_t idx)
        : record_(&region.device[idx]), table_(FindTable(*record_)), idx_(idx)
    {
    }

    explicit operator bool() const { return record_ != nullptr; }

    uint8_t Idx() const { return idx_; }
    [[gnu::always_inline]] SwitchDeviceRecord& Record() const { return *record_; }
    [[gnu::always_inline]] SwitchProvConfig& Config() const { return record_->config; }
    [[gnu::always_inline]] bool Enabled() const
    {
        return ReadOnce(Config().state) == OB_STATE_ENABLED;
    }

    // Ports that the per-port arrays can describe.
    [[gnu::always_inline]] uint8_t NumOfPorts() const
    {
        const uint8_t count = ReadOnce(Record().caps.numOfPorts);
        return count < OB_MAX_PORTS ? count : uint8_t{OB_MAX_PORTS};
    }

    [[gnu::always_inline]] bool IsPort(uint8_t port) const
    {
        return port < OB_MAX_PORTS && port < ReadOnce(Record().caps.numOfPorts);
    }

    // Port 0 is never a LAN port.
    [[gnu::always_inline]] bool IsLanPort(uint8_t port) const { return port >= 1 && IsPort(port); }

    // Non-zero when a PHY is attached; a port that the record cannot describe counts as one
    // without.
    uint32_t PortHasPhy(uint8_t port) const
    {
        return port < OB_MAX_PORTS ? ReadOnce(Record().caps.port[port].portHasPhy) : 0;
    }

    bool HasCapability(uint8_t flag) const
    {
        return (ReadOnce(Record().caps.capsFlags) & flag) != 0;
    }

    template <typename Slot>
    bool HasSlot(Slot HalTable::*slot) const
    {
        return Find(slot) != nullptr;
    }

    // Calls a slot with this switch's index; a slot or table that is not there counts as failed.
    template <typename... Params>
    int Hal(int (*HalTable::*slot)(int, Params...), std::type_identity_t<Params>... args) const
    {
        const auto function = Find(slot);
        return function != nullptr ? function(idx_, args...) : RC_ERROR;
    }

    int InitHal(void* privData) const
    {
        const auto function = Find(&HalTable::Init);
        return function != nullptr ? function(privData) : RC_ERROR;
    }

private:
    template <typename Slot>
    [[gnu::always_inline]] Slot Find(Slot HalTable::*slot) const
    {
        return table_ != nullptr ? table_->*slot : nullptr;
    }

    SwitchDeviceRecord* record_ = nullptr;
    const HalTable* table_ = nullptr;
    uint8_t idx_ = 0;
};

}  // namespace orblink::sw
