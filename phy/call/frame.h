// The frame that every PHY operation runs in, as scopes: whatever the path, the semaphore is
// released when the scope ends.
//
//     const PhyCall call{EP_CALLER, DevIdx};  prolog and device index; logs what is wrong
//     if (!call || !ValidateHwState(call.Record()))
//         return RC_ERROR;
#pragma once

#include "common/log.h"
#include "common/no_cancellation.h"
#include "phy/call/hal_loader.h"
#include "phy/call/region.h"

namespace orblink::phy {

// The steps, which log under their own names. The prolog gives the region with the semaphore held,
// or null with it free.
PhyDeviceRegion* _ApiProlog(int& semaphoreId);
void _LibEpilog(int semaphoreId);
bool ValidateDevIndex(const PhyDeviceRegion& region, uint8_t devIdx);
bool ValidateHwState(const PhyDeviceRecord& record);

// Holds the PHY semaphore with the region mapped and the HALs loaded, or is not entered.
class PhyFrame {
public:
    // For operations without a line of their own when the prolog fails.
    PhyFrame();
    explicit PhyFrame(LogCaller caller);
    ~PhyFrame();

    PhyFrame(const PhyFrame&) = delete;
    PhyFrame& operator=(const PhyFrame&) = delete;

    bool Entered() const { return region_ != nullptr; }
    PhyDeviceRegion& Region() const { return *region_; }

private:
    NoCancellation uncancelled_;
    int semaphoreId_;
    PhyDeviceRegion* region_;
};

// The frame and a valid device.
class PhyCall {
public:
    explicit PhyCall(uint8_t devIdx);
    PhyCall(LogCaller caller, uint8_t devIdx);

    explicit operator bool() const { return record_ != nullptr; }
    bool Entered() const { return frame_.Entered(); }
    PhyDeviceRegion& Region() const { return frame_.Region(); }
    PhyDeviceRecord& Record() const { return *record_; }

private:
    void Find(uint8_t devIdx);

    PhyFrame frame_;
    PhyDeviceRecord* record_ = nullptr;
};

}  // namespace orblink::phy
