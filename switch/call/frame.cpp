#include "switch/call/frame.h"

#include "switch/call/frame_in_place.h"

namespace orblink::sw {

// What nearly every call finds done. The region, or null with the semaphore free.
SwitchDeviceRegion* MapAndLoad(LogCaller caller, int semaphoreId)
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

}  // namespace orblink::sw
