#include "common/shared_object.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/descriptor.h"

namespace orblink {
namespace {

constexpr mode_t kAccess = 0666;
constexpr uid_t kRoot = 0;

// An object that cannot be looked at is not refused.
SharedMapping LookAt(const Descriptor& object, size_t size)
{
    struct stat found = {};
    if (fstat(object.Get(), &found) != 0)
        return {nullptr, MapStep::kDone, 0, kRoot};
    if (geteuid() == kRoot && found.st_uid != kRoot)
        return {nullptr, MapStep::kOwner, 0, found.st_uid};
    if (S_ISREG(found.st_mode) && found.st_size < static_cast<off_t>(size))
        return {nullptr, MapStep::kSize, 0, kRoot};
    return {nullptr, MapStep::kDone, 0, kRoot};
}

}  // namespace

SharedObject CreateSharedObject(const char* name, size_t size)
{
    const Descriptor object{shm_open(name, O_RDWR | O_CREAT, kAccess)};
    if (!object)
        return {CreateStep::kShmOpen, errno};
    if (ftruncate(object.Get(), static_cast<off_t>(size)) == -1)
        return {CreateStep::kFtruncate, errno};
    return {CreateStep::kDone, 0};
}

SharedMapping MapSharedObject(const char* name, size_t size)
{
    Descriptor object{KeepDescriptor(shm_open(name, O_RDWR, kAccess))};
    if (!object)
        return {nullptr, MapStep::kShmOpen, errno, kRoot};
    const SharedMapping look = LookAt(object, size);
    if (look.failed != MapStep::kDone)
        return look;
    void* const address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, object.Get(), 0);
    if (address == MAP_FAILED)
        return {nullptr, MapStep::kMmap, errno, kRoot};
    object.Release();  // kept open as long as the mapping, which is never unmapped
    return {address, MapStep::kDone, 0, kRoot};
}

}  // namespace orblink
