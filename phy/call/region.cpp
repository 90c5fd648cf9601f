#include "phy/call/region.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cerrno>

#include "common/shared_object.h"

namespace orblink::phy {

namespace {

constexpr const char* kRegionName = "/ethphy_driver";

}  // namespace

constinit Process process;

uint8_t PhyCount()
{
    const uint8_t count = process.region == nullptr ? uint8_t{0} : process.region->NumOfPhys;
    return count > EP_MAX_PHYS ? uint8_t{0} : count;
}

PhyDeviceRecord* FindRecord(uint8_t devIdx)
{
    if (process.region == nullptr || devIdx >= EP_MAX_PHYS)
        return nullptr;
    return &process.region->phy[devIdx];
}

PhyDeviceRecord* RecordOrError(LogCaller caller, uint8_t devIdx)
{
    PhyDeviceRecord* const record = FindRecord(devIdx);
    if (record == nullptr)
        EP_ERROR_AT_AS(caller, "failed DevIndex=%d", devIdx);
    return record;
}

}  // namespace orblink::phy

int EP_CreatePhyDevices(void)
{
    const int fd = shm_open(orblink::phy::kRegionName, O_RDWR | O_CREAT, 0666);
    if (fd < 0)
        return EP_ERROR("shm_open() failed, errno=%d", errno);
    const bool done = ftruncate(fd, sizeof(PhyDeviceRegion)) == 0;
    const int error = errno;
    close(fd);
    return done ? orblink::RC_OK : EP_ERROR("ftruncate() failed, errno=%d", error);
}

void* EP_MapEthphyDevices(void)
{
    const int fd = shm_open(orblink::phy::kRegionName, O_RDWR, 0666);
    if (fd < 0) {
        EP_ERROR_AT("shm_open() failed, errno=%d", errno);
        return nullptr;
    }
    if (orblink::IsCutShort(fd, sizeof(PhyDeviceRegion))) {
        close(fd);
        EP_ERROR_AT("the region is shorter than %zu bytes", sizeof(PhyDeviceRegion));
        return nullptr;
    }
    void* const region =
        mmap(nullptr, sizeof(PhyDeviceRegion), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (region == MAP_FAILED) {
        const int error = errno;
        close(fd);
        EP_ERROR_AT("mmap() failed, errno=%d", error);
        return nullptr;
    }
    return region;  // the descriptor stays open, as the mapping does, for the life of the process
}
