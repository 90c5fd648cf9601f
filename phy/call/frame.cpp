#include "phy/call/frame.h"

#include "phy/call/semaphore.h"

namespace orblink::phy {

int StartSharedMemoryService(LogCaller caller)
{
    const int rc = shm_init(3, 0, 0);
    return rc < 0 ? EP_ERROR_AS(caller, "shm_init() failed, Rc=%d", rc) : RC_OK;
}

namespace {

// What a process does once, with the semaphore held. The HAL libraries get no second chance: later
// calls find the region mapped.
int Attach(LogCaller caller)
{
    if (StartSharedMemoryService(caller) != RC_OK)
        return RC_ERROR;
    process.region = static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
    if (process.region == nullptr)
        return EP_ERROR_AS(caller, "shm_get() failed");
    if (_LoadHals() != RC_OK)
        return EP_ERROR_AS(caller, "_LoadHals() failed");
    return RC_OK;
}

}  // namespace

int _ApiProlog()
{
    if (process.semId < 0 && _InitGlobalSem() != RC_OK)
        return EP_ERROR("_InitGlobalSem() failed");
    if (_System5SemOp(-1) != RC_OK)
        return EP_ERROR("_ApiGlobalLock() failed");
    if (process.region == nullptr && Attach(EP_CALLER) != RC_OK) {
        _System5SemOp(+1);
        return RC_ERROR;
    }
    return RC_OK;
}

void _LibEpilog()
{
    if (_System5SemOp(+1) != RC_OK)
        EP_ERROR_AT("_ApiGlobalUnLock failed");
}

bool ValidateDevIndex(uint8_t devIdx)
{
    if (devIdx < PhyCount())
        return true;
    EP_ERROR("Invalid DevIndex=%d", devIdx);
    return false;
}

bool ValidateHwState(const PhyDeviceRecord& record)
{
    if (record.config.hwState != EP_HW_STATE_DISABLED)
        return true;
    EP_ERROR("PHY is in disabled state");
    return false;
}

PhyFrame::PhyFrame(LogCaller caller) : PhyFrame()
{
    if (!entered_)
        EP_ERROR_AT_AS(caller, "_ApiProlog() failed");
}

}  // namespace orblink::phy
