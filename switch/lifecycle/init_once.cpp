#include <cstring>

#include "board/hal_name.h"
#include "common/log.h"
#include "common/no_cancellation.h"
#include "switch/call/device.h"
#include "switch/call/hal_loader.h"
#include "switch/call/semaphore.h"
#include "switch/lifecycle/default_hal.h"
#include "switch/lifecycle/defaults.h"

namespace orblink::sw {
namespace {

// The new semaphore, released at the end of the initialisation.
class Held {
public:
    explicit Held(int semaphoreId) : semaphoreId_(semaphoreId) {}
    ~Held() { _ApiGlobalUnLock(semaphoreId_); }  // result dropped: what was initialised stands
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    int semaphoreId_;
};

int _InitSwitchDevices(SwitchBsd& bsd)
{
    if (OBOS_CreateSwitchDevices() != RC_OK)
        return OB_ERROR("OBOS_CreateSwitchDevices() failed");
    OB_TRACE("OBOS_CreateSwitchDevices() Done");
    auto* const region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    if (region == nullptr)
        return OB_ERROR("OBOS_MapSwitchDevices() failed");
    Attach(region);
    OB_TRACE("OBOS_MapSwitchDevices() Done");
    memset(region, 0, sizeof(*region));
    for (auto& record : region->device)
        record.halIdx = OB_NO_HAL_INDEX;
    if (OBOS_InitHwSpecificData(&bsd, region->vendor) != RC_OK)
        return OB_ERROR("OBOS_InitHwSpecificData() failed");
    return RC_OK;
}

int StoreBoardData(LogCaller caller, SwitchDeviceRegion& region, const SwitchBsd& bsd, int count)
{
    for (int i = 0; i < count; ++i) {
        SwitchBoardEntry& board = region.device[i].board;
        region.device[i].bsdValid = 1;
        if (memcpy_s(&board, sizeof(board), &bsd.entry[i], sizeof(bsd.entry[i])) != 0)
            return OB_ERROR_AS(caller,
                               "Runtime-constraint violation error in function kova_memcpy_s");
    }
    region.NumOfSwitches = static_cast<uint8_t>(count);
    return RC_OK;
}

// Switches that name the same library share one HAL index. Returns the number of indices given.
int AssignHalIndices(SwitchDeviceRegion& region, const SwitchBsd& bsd, int count)
{
    int firstSwitch[OB_MAX_SWITCHES];
    int given = 0;
    for (int i = 0; i < count; ++i) {
        int halIdx = 0;
        while (halIdx < given &&
               strncmp(bsd.entry[i].halLibName, bsd.entry[firstSwitch[halIdx]].halLibName,
                       OB_HAL_NAME_SIZE) != 0)
            ++halIdx;
        if (halIdx == given)
            firstSwitch[given++] = i;
        region.device[i].halIdx = static_cast<uint8_t>(halIdx);
    }
    return given;
}

// The default library's chip needs a receive-path reset after each lane reset.
void MarkReceiveResets(SwitchDeviceRegion& region)
{
    const uint8_t count = SwitchCount(region);
    for (int i = 0; i < count; ++i) {
        SwitchDeviceRecord& record = region.device[i];
        if (record.bsdValid != 0 &&
            strcmp(HalName(record.board.halLibName).Text(), kDefaultHalLibrary) == 0)
            record.rxResetAfterSerdes = 1;
    }
}

}  // namespace
}  // namespace orblink::sw

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_InitOnce(uint32_t Arg)
{
    const NoCancellation uncancelled;
    const int semaphoreId = _CreateGlobalSem();
    if (semaphoreId < 0)
        return OB_ERROR("_CreateGlobalSem() failed");
    if (_ApiGlobalLock(semaphoreId) != RC_OK)
        return OB_ERROR("_ApiGlobalLock() failed");
    const Held held{semaphoreId};
    SwitchBsd bsd;
    if (_InitSwitchDevices(bsd) != RC_OK)
        return OB_ERROR("_InitSwitchDevices() failed");
    SwitchDeviceRegion& region = *process.region;
    const int count = bsd.NumOfSwitchDevices <= OB_MAX_SWITCHES ? bsd.NumOfSwitchDevices : 0;
    if (StoreBoardData(OB_CALLER, region, bsd, count) != RC_OK)
        return RC_ERROR;
    const int halCount = AssignHalIndices(region, bsd, count);
    if (_LoadHals(region) != RC_OK)
        return OB_ERROR("_LoadHals() failed");
    for (uint8_t halIdx = 0; halIdx < halCount; ++halIdx)
        if (SwitchDevice(region, halIdx).InitHal(region.halPrivData[halIdx]) != RC_OK)
            return OB_ERROR("InitOnce() failed, HalIdx=%d", halIdx);
    const uint8_t toProvision = (Arg & 0xFF) != 0 ? SwitchCount(region) : uint8_t{0};
    for (uint8_t i = 0; i < toProvision; ++i) {
        const SwitchDevice device{region, i};
        // Progress, but at severity 1: operators look for it when a HAL hangs here.
        OB_ERROR("Calling GetSwitchCaps() , DevIdx=%d", i);
        if (device.Hal(&HalTable::GetSwitchCaps, &device.Record().caps) != RC_OK)
            return OB_ERROR("GetSwitchCaps() failed, DevIdx=%d", i);
        OB_ERROR("Return GetSwitchCaps() , DevIdx=%d", i);
        device.Record().capsValid = 1;
        WriteDefaultConfig(device.Record());
        device.Record().serviceStatus = 0;
    }
    MarkReceiveResets(region);
    return RC_OK;
}
