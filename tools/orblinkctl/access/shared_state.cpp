#include "tools/orblinkctl/access/shared_state.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "common/shared_names.h"
#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"
#include "tools/orblinkctl/access/unique_descriptor.h"

namespace ctl {

namespace {

// glibc leaves it to the caller.
union SemaphoreArgument {
    int value;
    semid_ds* set;
};

// A start is known in whole seconds of another clock than the operation.
constexpr int64_t kClockSlack = 2;

std::string RegionPath(const FamilyNames& names)
{
    return std::string("/dev/shm") + names.region;
}

}  // namespace

const FamilyNames& NamesOf(Family family)
{
    static constexpr FamilyNames kNames[] = {
        {"switch", OB_SWITCH_KEY_FILE, OB_SWITCH_REGION_NAME, sizeof(SwitchDeviceRegion),
         offsetof(SwitchDeviceRegion, NumOfSwitches)},
        {"PHY", OB_PHY_KEY_FILE, OB_PHY_REGION_NAME, sizeof(PhyDeviceRegion),
         offsetof(PhyDeviceRegion, NumOfPhys)},
    };
    return kNames[family == Family::kPhy ? 1 : 0];
}

LockState LookAtLock(Family family)
{
    LockState lock;
    const key_t key = ftok(NamesOf(family).keyFile, OB_KEY_NUMBER);
    const int id = key == -1 ? -1 : semget(key, 1, 0);
    semid_ds set = {};
    if (id < 0 || semctl(id, 0, IPC_STAT, SemaphoreArgument{.set = &set}) != 0) {
        lock.error = errno;
        return lock;
    }
    lock.id = id;
    lock.value = semctl(id, 0, GETVAL);
    lock.waiting = static_cast<unsigned>(semctl(id, 0, GETNCNT));
    lock.lastOperator = semctl(id, 0, GETPID);
    lock.lastOperation = set.sem_otime;
    lock.created = set.sem_ctime;
    lock.owner = set.sem_perm.uid;
    return lock;
}

RegionState LookAtRegion(Family family)
{
    const FamilyNames& names = NamesOf(family);
    RegionState region;
    struct stat object = {};
    if (lstat(RegionPath(names).c_str(), &object) != 0) {
        region.error = errno;
        return region;
    }
    region.exists = true;
    region.owner = object.st_uid;
    region.group = object.st_gid;
    region.mode = object.st_mode;
    region.size = static_cast<uint64_t>(object.st_size);
    region.device = object.st_dev;
    region.inode = object.st_ino;
    const UniqueDescriptor file(shm_open(names.region, O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0));
    if (!file) {
        region.error = errno;
        return region;
    }
    uint8_t count = 0;
    if (region.size >= names.regionSize &&
        pread(file.Get(), &count, 1, static_cast<off_t>(names.countOffset)) == 1)
        region.devices = count;
    return region;
}

FamilyState LookAt(Family family)
{
    return {family, LookAtLock(family), LookAtRegion(family)};
}

std::optional<std::string> OriginFault(Family family, const RegionState& region)
{
    const std::string path = RegionPath(NamesOf(family));
    if (!region.exists)
        return std::nullopt;
    if (!S_ISREG(region.mode))
        return path + " is no shared-memory object: 'rm -r " + path + "'";
    if (geteuid() == 0 && region.owner != 0)
        return path + " belongs to user " + std::to_string(region.owner) +
               ", who could name any library there: 'rm " + path + "'";
    return std::nullopt;
}

std::optional<std::string> RegionFault(Family family, const RegionState& region)
{
    const FamilyNames& names = NamesOf(family);
    const std::string path = RegionPath(names);
    auto origin = OriginFault(family, region);
    if (origin || !region.exists || region.size >= names.regionSize)
        return origin;
    return path + " has " + std::to_string(region.size) + " of " +
           std::to_string(names.regionSize) + " bytes; end the processes that use it, then 'rm " +
           path + "' and 'orblinkctl recover --apply'";
}

Holder JudgeHolder(const LockState& lock, const std::optional<Process>& lastOperator)
{
    if (lock.value > 0)
        return Holder::kNone;
    if (lock.lastOperator == 0 || lock.lastOperation == 0)
        return Holder::kUnknown;
    if (!lastOperator)
        return Holder::kEnded;
    return lastOperator->started > lock.lastOperation + kClockSlack ? Holder::kUnknown
                                                                    : Holder::kAlive;
}

}  // namespace ctl
