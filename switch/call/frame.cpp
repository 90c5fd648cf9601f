#include "switch/call/frame.h"

#include "switch/call/hal_loader.h"
#include "switch/call/semaphore.h"

namespace orblink::sw {
namespace {

// What nearly every call finds done. The region, or null with the semaphore free.
[[gnu::cold, gnu::noinline]] SwitchDeviceRegion* MapAndLoad(LogCaller caller,
                                                            const int& semaphoreId)
{
    SwitchDeviceRegion* region = process.attached ? process.region.load() : nullptr;
    if (region == nullptr) {
        region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
        if (region != nullptr)
            Attach(region);
    }
    if (region == nullptr)
        OB_ERROR_AS(caller, "OBOS_MapSwitchDevices() failed");
    else if (_LoadHals(*region) != RC_OK)
        OB_ERROR_AS(caller, "_LoadHals() failed");
    else
        return region;
    _ApiGlobalUnLock(semaphoreId);  // result dropped: the call has failed already
    return nullptr;
}

// The region, with the semaphore held, or null with it free.
[[gnu::always_inline]] inline SwitchDeviceRegion* _ApiProlog(int& semaphoreId)
{
    semaphoreId = process.semaphoreId.Get();
    if (semaphoreId == -1 && _InitGlobalSem(semaphoreId) != RC_OK) {
        OB_ERROR("_InitGlobalSem() failed");
        return nullptr;
    }
    if (_ApiGlobalLock(semaphoreId) != RC_OK) {
        OB_ERROR("_ApiGlobalLock() failed");
        return nullptr;
    }
    if (process.attached) {
        SwitchDeviceRegion* const region = process.region;
        if (HalsAreLoaded(*region))
            return region;
    }
    return MapAndLoad(OB_CALLER, semaphoreId);
}

[[gnu::always_inline]] inline SwitchDevice FindDevice(const SwitchLock& lock, LogCaller caller,
                                                      uint8_t devIdx)
{
    if (!lock) {
        OB_ERROR_AS(caller, "_ApiProlog() failed, DevIdx=%d", devIdx);
        return {};
    }
    if (devIdx < SwitchCount(lock.Region()))
        return {lock.Region(), devIdx};
    OB_ERROR_AS(caller, "Invalid device index, DevIdx=%d", devIdx);
    return {};
}

}  // namespace

// cppcheck-suppress uninitMemberVar ; the prolog sets it, where anybody asks for it
[[gnu::always_inline]] inline SwitchLock::SwitchLock(InPlace) : region_(_ApiProlog(semaphoreId_)) {}

SwitchLock::SwitchLock() : SwitchLock(InPlace{}) {}

SwitchLock::~SwitchLock()
{
    if (*this)
        _ApiGlobalUnLock(semaphoreId_);  // result dropped: what the call did stands
}

EntryExitLines::EntryExitLines(TraceCaller caller) : caller_(caller)
{
    OB_TRACE_AS(caller_, "--->");
}

EntryExitLines::~EntryExitLines()
{
    OB_TRACE_AS(caller_, "<---");
}

FinishedLine::~FinishedLine()
{
    const char* const how = ok_ ? "OK" : "with error!";
    if (!prologDone_)
        return;
    if (devIdx_ == kNone)
        OB_TRACE_AS(caller_, "finished %s", how);
    else
        OB_TRACE_AS(caller_, "finished %s, DevIdx=%d", how, devIdx_);
}

SwitchCall::SwitchCall(LogCaller caller, uint8_t devIdx)
    : lock_(SwitchLock::InPlace{}), device_(FindDevice(lock_, caller, devIdx))
{
}

}  // namespace orblink::sw
