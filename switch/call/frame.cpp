#include "switch/call/frame.h"

#include "switch/call/semaphore.h"

namespace orblink::sw {

constinit ProcessState process;

uint8_t SwitchCount()
{
    const uint8_t count = process.region->NumOfSwitches;
    return count <= OB_MAX_SWITCHES ? count : uint8_t{0};
}

namespace {

int Attach(LogCaller caller)
{
    if (process.region == nullptr)
        process.region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    if (process.region == nullptr)
        return OB_ERROR_AS(caller, "OBOS_MapSwitchDevices() failed");
    if (_LoadHals() != RC_OK)
        return OB_ERROR_AS(caller, "_LoadHals() failed");
    return RC_OK;
}

int _ApiProlog()
{
    if (process.semaphoreId == -1 && _InitGlobalSem() != RC_OK)
        return OB_ERROR("_InitGlobalSem() failed");
    if (_ApiGlobalLock() != RC_OK)
        return OB_ERROR("_ApiGlobalLock() failed");
    if (Attach(OB_CALLER) == RC_OK)
        return RC_OK;
    _ApiGlobalUnLock();
    return RC_ERROR;
}

}  // namespace

SwitchLock::SwitchLock() : held_(_ApiProlog() == RC_OK) {}

SwitchLock::~SwitchLock()
{
    if (held_)
        _ApiGlobalUnLock();
}

EntryExitLines::EntryExitLines(LogCaller caller) : caller_(caller)
{
    OB_TRACE_AS(caller_, "--->");
}

EntryExitLines::~EntryExitLines()
{
    OB_TRACE_AS(caller_, "<---");
}

FinishedLine::~FinishedLine()
{
    if (prologDone_)
        OB_TRACE_AS(caller_, "finished %s", ok_ ? "OK" : "with error!");
}

SwitchCall::SwitchCall(LogCaller caller, uint8_t devIdx, FinishedLine* finished)
    : device_(devIdx), valid_(false)
{
    if (!lock_) {
        OB_ERROR_AS(caller, "_ApiProlog() failed, DevIdx=%d", devIdx);
        return;
    }
    if (finished != nullptr)
        finished->PrologDone();
    valid_ = devIdx < SwitchCount();
    if (!valid_)
        OB_ERROR_AS(caller, "Invalid device index, DevIdx=%d", devIdx);
}

}  // namespace orblink::sw
