#include <cstring>

#include "common/log.h"
#include "switch/lifecycle/default_hal.h"
#include "switch/lifecycle/defaults.h"
#include "switch/call/device.h"
#include "switch/call/semaphore.h"

namespace orblink::sw {
namespace {

SwitchDeviceRecord& RecordOf(int switchIdx)
{
    return process.region->device[switchIdx];
}

int _InitSwitchDevices(SwitchBsd& bsd)
{
    if (OBOS_CreateSwitchDevices() != RC_OK)
        return OB_ERROR("OBOS_CreateSwitchDevices() failed");
    OB_TRACE("OBOS_CreateSwitchDevices() Done");
    process.region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    if (process.region == nullptr)
        return OB_ERROR("OBOS_MapSwitchDevices() failed");
    OB_TRACE("OBOS_MapSwitchDevices() Done");
    memset(process.region, 0, sizeof(*process.region));
    for (auto& record : process.region->device)
        record.halIdx = OB_NO_HAL_INDEX;
    if (OBOS_InitHwSpecificData(&bsd, process.region->vendor) != RC_OK)
        return OB_ERROR("OBOS_InitHwSpecificData() failed");
    return RC_OK;
}

// Switches that name the same library share one HAL index. Returns the number of indices given.
int AssignHalIndices(int switchCount)
{
    int firstSwitch[OB_MAX_SWITCHES];
    int given = 0;
    for (int i = 0; i < switchCount; ++i) {
        int halIdx = 0;
        while (halIdx < given &&
               strncmp(RecordOf(i).board.halLibName, RecordOf(firstSwitch[halIdx]).board.halLibName,
                       OB_HAL_NAME_SIZE) != 0)
            ++halIdx;
        if (halIdx == given)
            firstSwitch[given++] = i;
        RecordOf(i).halIdx = static_cast<uint8_t>(halIdx);
    }
    return given;
}

int InitHals(LogCaller caller, int halCount)
{
    for (int halIdx = 0; halIdx < halCount; ++halIdx)
        if (SwitchDevice(static_cast<uint8_t>(halIdx))
                .InitHal(process.region->halPrivData[halIdx]) != RC_OK)
            return OB_ERROR_AS(caller, "InitOnce() failed, HalIdx=%d", halIdx);
    return RC_OK;
}

int SetUpSwitches(LogCaller caller, const SwitchBsd& bsd)
{
    const int count = bsd.NumOfSwitchDevices <= OB_MAX_SWITCHES ? bsd.NumOfSwitchDevices : 0;
    for (int i = 0; i < count; ++i) {
        RecordOf(i).bsdValid = 1;
        RecordOf(i).board = bsd.entry[i];
    }
    process.region->NumOfSwitches = static_cast<uint8_t>(count);
    const int halCount = AssignHalIndices(count);
    if (_LoadHals() != RC_OK)
        return OB_ERROR_AS(caller, "_LoadHals() failed");
    return InitHals(caller, halCount);
}

int ProvisionSwitch(LogCaller caller, const SwitchDevice& device)
{
    SwitchDeviceRecord& record = device.Record();
    // Progress, but at severity 1: operators look for it when a HAL hangs here.
    OB_ERROR_AS(caller, "Calling GetSwitchCaps() , DevIdx=%d", device.Idx());
    if (device.Hal(&HalTable::GetSwitchCaps, &record.caps) != RC_OK)
        return OB_ERROR_AS(caller, "GetSwitchCaps() failed, DevIdx=%d", device.Idx());
    OB_ERROR_AS(caller, "Return GetSwitchCaps() , DevIdx=%d", device.Idx());
    record.capsValid = 1;
    WriteDefaultConfig(record);
    record.serviceStatus = 0;
    return RC_OK;
}

int ProvisionSwitches(LogCaller caller)
{
    for (uint8_t i = 0; i < SwitchCount(); ++i)
        if (ProvisionSwitch(caller, SwitchDevice(i)) != RC_OK)
            return RC_ERROR;
    return RC_OK;
}

void MarkReceiveResets()
{
    for (int i = 0; i < SwitchCount(); ++i) {
        SwitchDeviceRecord& record = RecordOf(i);
        if (record.bsdValid != 0 &&
            strncmp(record.board.halLibName, kDefaultHalLibrary, OB_HAL_NAME_SIZE) == 0)
            record.rxResetAfterSerdes = 1;
    }
}

// All that is done with the new semaphore held.
int InitFamily(LogCaller caller, bool provision)
{
    SwitchBsd bsd;
    if (_InitSwitchDevices(bsd) != RC_OK)
        return OB_ERROR_AS(caller, "_InitSwitchDevices() failed");
    if (SetUpSwitches(caller, bsd) != RC_OK)
        return RC_ERROR;
    if (provision && ProvisionSwitches(caller) != RC_OK)
        return RC_ERROR;
    MarkReceiveResets();
    return RC_OK;
}

}  // namespace
}  // namespace orblink::sw

int ORBLINK_InitOnce(uint32_t Arg)
{
    using namespace orblink;
    using namespace orblink::sw;

    if (_CreateGlobalSem() != RC_OK)
        return OB_ERROR("_CreateGlobalSem() failed");
    if (_ApiGlobalLock() != RC_OK)
        return OB_ERROR("_ApiGlobalLock() failed");
    const int result = InitFamily(OB_CALLER, (Arg & 0xFF) != 0);
    _ApiGlobalUnLock();
    return result;
}
