#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/log.h"
#include "switch/orblink_api.h"

namespace {

constexpr const char* kRegionName = "/obos_orblink_driver";
constexpr mode_t kRegionMode = 0666;

// A creator that failed half-way leaves an object without its size: touching its mapping would end
// the process with the semaphore held.
bool IsCutShort(int fd)
{
    struct stat object = {};
    return fstat(fd, &object) == 0 && S_ISREG(object.st_mode) &&
           object.st_size < static_cast<off_t>(sizeof(SwitchDeviceRegion));
}

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
    if (IsCutShort(fd)) {
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
