#include "switch/call/frame.h"

#include "switch/call/hal_loader.h"
#include "switch/call/semaphore.h"

namespace orblink::sw {
namespace {

SwitchDeviceRegion* AttachedRegion()
{
    if (process.attached)
        return process.region;
    auto* const region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    if (region != nullptr)
        Attach(region);
    return region;
}

// The region, with the semaphore held, or null with it free.
SwitchDeviceRegion* _ApiProlog(int& semaphoreId)
{
    semaphoreId = process.semaphoreId.load(std::memory_order_relaxed);
    if (semaphoreId == -1 && _InitGlobalSem(semaphoreId) != RC_OK) {
        OB_ERROR("_InitGlobalSem() failed");
        return nullptr;
    }
    if (_ApiGlobalLock(semaphoreId) != RC_OK) {
        OB_ERROR("_ApiGlobalLock() failed");
        return nullptr;
    }
    SwitchDeviceRegion* const region = AttachedRegion();
    if (region == nullptr)
        OB_ERROR("OBOS_MapSwitchDevices() failed");
    else if (!HalsAreLoaded(*region) && _LoadHals(*region) != RC_OK)
        OB_ERROR("_LoadHals() failed");
    else
        return region;
    _ApiGlobalUnLock(semaphoreId);  // result dropped: the call has failed already
    return nullptr;
}

}  // namespace

// cppcheck-suppress uninitMemberVar ; the prolog sets it, where anybody asks for it
SwitchLock::SwitchLock() : state_{_ApiProlog(semaphoreId_), {}}
{
    for (int i = 0; i < OB_MAX_SWITCHES; ++i)
        state_.halTables[i] = process.halTables[i];
}

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

SwitchCall::SwitchCall(LogCaller caller, uint8_t devIdx, FinishedLine* finished)
    : device_(lock_.State(), devIdx), valid_(false)
{
    if (!lock_) {
        OB_ERROR_AS(caller, "_ApiProlog() failed, DevIdx=%d", devIdx);
        return;
    }
    if (finished != nullptr)
        finished->PrologDone();
    valid_ = devIdx < SwitchCount(lock_.Region());
    if (!valid_)
        OB_ERROR_AS(caller, "Invalid device index, DevIdx=%d", devIdx);
}

}  // namespace orblink::sw
