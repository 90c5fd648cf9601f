#include "common/log.h"
#include "common/shared_names.h"
#include "common/shared_object.h"
#include "switch/orblink_api.h"

using namespace orblink;

namespace {

constexpr const char* kRegionName = OB_SWITCH_REGION_NAME;

}  // namespace

int OBOS_CreateSwitchDevices(void)
{
    const SharedObject object = CreateSharedObject(kRegionName, sizeof(SwitchDeviceRegion));
    switch (object.failed) {
        case CreateStep::kShmOpen:
            return OB_ERROR("shm_open() failed, errno=%d", object.error);
        case CreateStep::kFtruncate:
            return OB_ERROR("ftruncate() failed, errno=%d", object.error);
        case CreateStep::kDone:
            break;
    }
    return RC_OK;
}

void* OBOS_MapSwitchDevices(void)
{
    const SharedMapping mapping = MapSharedObject(kRegionName, sizeof(SwitchDeviceRegion));
    switch (mapping.failed) {
        case MapStep::kShmOpen:
            OB_ERROR_TWICE("%s:%d %s:%d shm_open() failed, errno=%d", mapping.error);
            break;
        case MapStep::kOwner:
            OB_ERROR_TWICE("%s:%d %s:%d the region %s is owned by user %u and not by root",
                           kRegionName, mapping.owner);
            break;
        case MapStep::kSize:
            OB_ERROR_TWICE("%s:%d %s:%d the region %s is shorter than %zu bytes", kRegionName,
                           sizeof(SwitchDeviceRegion));
            break;
        case MapStep::kMmap:
            OB_ERROR_TWICE("%s:%d %s:%d mmap() failed, errno=%d", mapping.error);
            break;
        case MapStep::kDone:
            break;
    }
    return mapping.address;
}
