// What nearly every operation goes through.
#pragma once

#include "switch/call/frame.h"
#include "switch/call/hal_loader.h"
#include "switch/call/semaphore.h"

namespace orblink::sw {

// What nearly every call finds done. The region, or null with the semaphore free.
[[gnu::cold, gnu::noinline]] SwitchDeviceRegion* MapAndLoad(LogCaller caller, int semaphoreId);

// The region, with the semaphore held, or null with it free.
[[gnu::always_inline]] inline SwitchDeviceRegion* _ApiProlog(int& semaphoreId)
{
    semaphoreId = process.semaphoreId.Get();
    if (semaphoreId < 0)
        semaphoreId = _InitGlobalSem();
    if (semaphoreId < 0) {
        OB_ERROR("_InitGlobalSem() failed");
        return nullptr;
    }
    if (_ApiGlobalLock(semaphoreId) != RC_OK) {
        OB_ERROR("_ApiGlobalLock() failed");
        return nullptr;
    }
    if (process.attached) {
        SwitchDeviceRegion* const region = process.region;
        if (region == nullptr)
            __builtin_unreachable();  // attached to a region: nobody need ask again
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

// cppcheck-suppress uninitMemberVarPrivate ; the prolog sets it, where anybody asks for it
[[gnu::always_inline]] inline SwitchLock::SwitchLock(InPlace) : region_(_ApiProlog(semaphoreId_)) {}

OB_IN_EACH_CALL SwitchLock::SwitchLock() : SwitchLock(InPlace{}) {}

OB_IN_EACH_CALL SwitchLock::~SwitchLock()
{
    if (*this)
        _ApiGlobalUnLock(semaphoreId_);  // result dropped: what the call did stands
}

OB_IN_EACH_CALL SwitchCall::SwitchCall(LogCaller caller, uint8_t devIdx)
    : lock_(SwitchLock::InPlace{}), device_(FindDevice(lock_, caller, devIdx))
{
}

}  // namespace orblink::sw
