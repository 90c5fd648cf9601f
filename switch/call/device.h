// One switch: its record and its HAL. The record lies in shared memory that any process can have
// spoilt, so what is read from it to index or to count by is bounded here.
#pragma once

#include <type_traits>

#include "common/result.h"
#include "switch/call/process_state.h"

namespace orblink::sw {

class SwitchDevice {
public:
    // idx must be below OB_MAX_SWITCHES before anything but Idx() is used.
    explicit SwitchDevice(uint8_t idx) : idx_(idx) {}

    uint8_t Idx() const { return idx_; }
    SwitchDeviceRecord& Record() const { return process.region->device[idx_]; }
    bool IsEnabled() const { return Record().config.state == OB_STATE_ENABLED; }

    // Ports that the per-port arrays can describe.
    uint8_t NumOfPorts() const
    {
        const uint8_t count = Record().caps.numOfPorts;
        return count < OB_MAX_PORTS ? count : uint8_t{OB_MAX_PORTS};
    }

    // A port that the record cannot describe counts as one without a PHY.
    uint32_t PortHasPhy(uint8_t port) const
    {
        return port < OB_MAX_PORTS ? Record().caps.port[port].portHasPhy : 0;
    }

    template <typename Slot>
    bool HasSlot(Slot HalTable::*slot) const
    {
        const HalTable* table = Table();
        return table != nullptr && table->*slot != nullptr;
    }

    // Calls a slot with this switch's index; a slot or table that is not there counts as failed.
    template <typename... Params>
    int Hal(int (*HalTable::*slot)(int, Params...), std::type_identity_t<Params>... args) const
    {
        return HasSlot(slot) ? (Table()->*slot)(idx_, args...) : RC_ERROR;
    }

    int InitHal(void* privData) const
    {
        return HasSlot(&HalTable::Init) ? Table()->Init(privData) : RC_ERROR;
    }

private:
    const HalTable* Table() const
    {
        const uint8_t halIdx = Record().halIdx;
        return halIdx < OB_MAX_SWITCHES ? process.halTables[halIdx] : nullptr;
    }

    uint8_t idx_;
};

}  // namespace orblink::sw
