#include "switch_hal_services/attached_switch.h"

#include "switch/call/device.h"

namespace orblink {
namespace {

SwitchDeviceRecord* AttachedRecord(uint8_t devIdx)
{
    SwitchDeviceRegion* const region = sw::process.region;
    return region != nullptr && devIdx < OB_MAX_SWITCHES ? &region->device[devIdx] : nullptr;
}

}  // namespace

const SwitchBoardEntry* AttachedBoardEntry(uint8_t devIdx)
{
    const SwitchDeviceRecord* const record = AttachedRecord(devIdx);
    return record != nullptr ? &record->board : nullptr;
}

void* AttachedPrivData(uint8_t devIdx)
{
    SwitchDeviceRegion* const region = sw::process.region;
    if (region == nullptr || devIdx >= OB_MAX_SWITCHES)
        return nullptr;
    const uint8_t halIdx = ReadOnce(region->device[devIdx].halIdx);
    return halIdx < OB_MAX_SWITCHES ? region->halPrivData[halIdx] : nullptr;
}

uint16_t AttachedMtuSize(uint8_t devIdx)
{
    const SwitchDeviceRecord* const record = AttachedRecord(devIdx);
    return record != nullptr ? ReadOnce(record->config.mtuSize) : uint16_t{0};
}

uint8_t AttachedSwitchCount()
{
    const SwitchDeviceRegion* const region = sw::process.region;
    return region != nullptr ? sw::SwitchCount(*region) : uint8_t{0};
}

}  // namespace orblink
