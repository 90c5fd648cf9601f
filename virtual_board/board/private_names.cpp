#include "virtual_board/board/private_names.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

namespace vboard {
namespace {

constexpr int kPermissions = 0777;
constexpr uint32_t kFileBits = 0x00FFFFFF;  // what a key takes from its file; the rest is a number

int ErrorOf(int result)
{
    return result < 0 ? errno : 0;
}

bool Exists(int semaphore)
{
    return semctl(semaphore, 0, GETVAL) >= 0;
}

}  // namespace

PrivateNames::~PrivateNames()
{
    for (const auto& [key, id] : semaphores_)
        semctl(id, 0, IPC_RMID);  // result dropped: a program may have removed it
}

std::string PrivateNames::PathOf(uint32_t index) const
{
    const std::string path = wire::kPrivatePaths[index];
    return directory_ + path.substr(path.rfind('/'));
}

int PrivateNames::Open(uint32_t index, const wire::PrivateOpen& open, UniqueFd& opened) const
{
    // The flags of i386 for large files and links mean the same.
    opened = UniqueFd{::open(PathOf(index).c_str(), open.flags | O_CLOEXEC, open.mode)};
    return opened ? 0 : errno;
}

int PrivateNames::Stat(uint32_t index, struct statx& facts) const
{
    return ErrorOf(statx(AT_FDCWD, PathOf(index).c_str(), 0, STATX_BASIC_STATS, &facts));
}

int PrivateNames::Unlink(uint32_t index) const
{
    return ErrorOf(unlink(PathOf(index).c_str()));
}

int PrivateNames::ChangeMode(uint32_t index, mode_t mode) const
{
    return ErrorOf(chmod(PathOf(index).c_str(), mode));
}

bool PrivateNames::IsPrivate(key_t key) const
{
    for (uint32_t index = 0; index < std::size(wire::kPrivatePaths); ++index) {
        const key_t made = ftok(PathOf(index).c_str(), 1);
        if (made != -1 && ((made ^ key) & kFileBits) == 0)
            return true;
    }
    return false;
}

int PrivateNames::GetSemaphore(const wire::SemaphoreGet& get, int& id)
{
    auto found = semaphores_.find(get.key);
    if (found != semaphores_.end() && !Exists(found->second)) {
        semaphores_.erase(found);
        found = semaphores_.end();
    }
    if (found != semaphores_.end()) {
        id = found->second;
        return (get.flags & (IPC_CREAT | IPC_EXCL)) == (IPC_CREAT | IPC_EXCL) ? EEXIST : 0;
    }
    if ((get.flags & IPC_CREAT) == 0)
        return ENOENT;
    id = semget(IPC_PRIVATE, get.count, get.flags & kPermissions);
    if (id < 0)
        return errno;
    semaphores_[get.key] = id;
    return 0;
}

}  // namespace vboard
