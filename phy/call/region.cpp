#include "phy/call/region.h"

#include "common/log.h"
#include "common/shared_names.h"
#include "common/shared_object.h"

namespace orblink::phy {
namespace {

constexpr const char* kRegionName = OB_PHY_REGION_NAME;

}  // namespace

uint8_t PhyCount()
{
    const PhyDeviceRegion* const region = process.region;
    return region == nullptr ? uint8_t{0} : PhyCount(*region);
}

PhyDeviceRecord* FindRecord(uint8_t devIdx)
{
    PhyDeviceRegion* const region = process.region;
    return region == nullptr || devIdx >= EP_MAX_PHYS ? nullptr : &region->phy[devIdx];
}

int StartSharedMemoryService()
{
    return process.region == nullptr ? shm_init(3, 0, 0) : 0;
}

PhyDeviceRegion* MapRegion()
{
    auto* const region = static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
    if (region != nullptr) {
        process.region = region;  // one from before stays: a thread may be using it
        process.attached = true;
    }
    return region;
}

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int EP_CreatePhyDevices(void)
{
    const SharedObject object = CreateSharedObject(kRegionName, sizeof(PhyDeviceRegion));
    switch (object.failed) {
        case CreateStep::kShmOpen:
            return EP_ERROR("shm_open() failed, errno=%d", object.error);
        case CreateStep::kFtruncate:
            return EP_ERROR("ftruncate() failed, errno=%d", object.error);
        case CreateStep::kDone:
            break;
    }
    return RC_OK;
}

void* EP_MapEthphyDevices(void)
{
    const SharedMapping mapping = MapSharedObject(kRegionName, sizeof(PhyDeviceRegion));
    switch (mapping.failed) {
        case MapStep::kShmOpen:
            EP_ERROR_AT("%s:%d shm_open() failed, errno=%d", mapping.error);
            break;
        case MapStep::kOwner:
            EP_ERROR_AT("%s:%d the region %s is owned by user %u and not by root", kRegionName,
                        mapping.owner);
            break;
        case MapStep::kSize:
            EP_ERROR_AT("%s:%d the region %s is shorter than %zu bytes", kRegionName,
                        sizeof(PhyDeviceRegion));
            break;
        case MapStep::kMmap:
            EP_ERROR_AT("%s:%d mmap() failed, errno=%d", mapping.error);
            break;
        case MapStep::kDone:
            break;
    }
    return mapping.address;
}
