#include "phy/call/frame.h"

#include "phy/call/semaphore.h"

namespace orblink::phy {

PhyDeviceRegion* _ApiProlog(int& semaphoreId)
{
    semaphoreId = process.semaphoreId.Get();
    if (semaphoreId < 0)
        semaphoreId = _InitGlobalSem();
    if (semaphoreId < 0) {
        EP_ERROR("_InitGlobalSem() failed");
        return nullptr;
    }
    if (_System5SemOp(semaphoreId, kTake) != RC_OK) {
        EP_ERROR("_ApiGlobalLock() failed");
        return nullptr;
    }
    if (process.attached)
        return process.region;
    // Once per process. The HAL libraries get no second chance: later calls find the region mapped.
    const int rc = StartSharedMemoryService();
    PhyDeviceRegion* const region = rc < 0 ? nullptr : MapRegion();
    if (rc < 0)
        EP_ERROR("shm_init() failed, Rc=%d", rc);
    else if (region == nullptr)
        EP_ERROR("shm_get() failed");
    else if (_LoadHals(*region) != RC_OK)
        EP_ERROR("_LoadHals() failed");
    else
        return region;
    _System5SemOp(semaphoreId, kRelease);  // result dropped: the call has failed already
    return nullptr;
}

void _LibEpilog(int semaphoreId)
{
    if (_System5SemOp(semaphoreId, kRelease) != RC_OK)
        EP_ERROR_AT("%s:%d _ApiGlobalUnLock failed");
}

bool ValidateDevIndex(const PhyDeviceRegion& region, uint8_t devIdx)
{
    if (devIdx < PhyCount(region))
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

// cppcheck-suppress uninitMemberVar ; the prolog sets it, where anybody asks for it
PhyFrame::PhyFrame() : region_(_ApiProlog(semaphoreId_)) {}

// cppcheck-suppress uninitMemberVar ; the prolog sets it, where anybody asks for it
PhyFrame::PhyFrame(LogCaller caller) : region_(_ApiProlog(semaphoreId_))
{
    if (!Entered())
        EP_ERROR_AT_AS(caller, "%s:%d _ApiProlog() failed");
}

PhyFrame::~PhyFrame()
{
    if (Entered())
        _LibEpilog(semaphoreId_);
}

PhyCall::PhyCall(uint8_t devIdx)
{
    Find(devIdx);
}

PhyCall::PhyCall(LogCaller caller, uint8_t devIdx) : frame_(caller)
{
    Find(devIdx);
}

void PhyCall::Find(uint8_t devIdx)
{
    if (frame_.Entered() && ValidateDevIndex(frame_.Region(), devIdx))
        record_ = &frame_.Region().phy[devIdx];
}

}  // namespace orblink::phy
