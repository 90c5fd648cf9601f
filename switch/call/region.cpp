#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

#include "common/log.h"
#include "common/shared_object.h"
#include "switch/orblink_api.h"

namespace {

constexpr const char* kRegionName = "/obos_orblink_driver";
constexpr mode_t kRegionMode = 0666;

}  // namespace

int OBOS_CreateSwitchDevices(void)
{
    const int fd = shm_open(kRegionName, O_RDWR | O_CREAT, kRegionMode);
    if (fd == -1)
        return OB_ERROR("shm_open() failed, errno=%d", errno);
    if (ftruncate(fd, sizeof(SwitchDeviceRegion)) == -1) {
        const int error = errno;
        close(fd);
        return OB_ERROR("ftruncate() failed, errno=%d", error);
    }
    close(fd);
    return orblink::RC_OK;
}

void* OBOS_MapSwitchDevices(void)
{
    const int fd = shm_open(kRegionName, O_RDWR, kRegionMode);
    if (fd == -1) {
        OB_ERROR_TWICE("shm_open() failed, errno=%d", errno);
        return nullptr;
    }
    if (orblink::IsCutShort(fd, sizeof(SwitchDeviceRegion))) {
        close(fd);
        OB_ERROR_TWICE("the region is shorter than %zu bytes", sizeof(SwitchDeviceRegion));
        return nullptr;
    }
    void* region =
        mmap(nullptr, sizeof(SwitchDeviceRegion), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (region == MAP_FAILED) {
        const int error = errno;
        close(fd);
        OB_ERROR_TWICE("mmap() failed, errno=%d", error);
        return nullptr;
    }
    // The descriptor stays open as long as the mapping, that is, for the life of the process.
    return region;
}
