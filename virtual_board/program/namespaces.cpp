#include "virtual_board/program/namespaces.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>

#include "virtual_board/board/system_failure.h"

namespace vboard {
namespace {

constexpr int kPrivate = CLONE_NEWNS | CLONE_NEWIPC;

void WriteFile(const char* path, const std::string& text)
{
    std::ofstream file{path};
    if (!(file << text << std::flush))
        Fail(path);
}

// Everybody stays who he is.
void MapOwnIds(uid_t uid, gid_t gid)
{
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", std::to_string(uid) + " " + std::to_string(uid) + " 1");
    WriteFile("/proc/self/gid_map", std::to_string(gid) + " " + std::to_string(gid) + " 1");
}

// True when it took a user namespace.
bool Unshare()
{
    if (unshare(kPrivate) == 0)
        return false;
    uid_t uid = geteuid();
    gid_t gid = getegid();
    if (unshare(kPrivate | CLONE_NEWUSER) != 0)
        Fail("cannot create private namespaces");
    MapOwnIds(uid, gid);
    return true;
}

// In a chroot the root is no mount point (EINVAL): there is nothing to be made private then, and
// the mounts stay in this namespace as long as the host does not share its own root.
void MakeMountsPrivate()
{
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 && errno != EINVAL)
        Fail("cannot make the mounts private");
}

void MountEmpty(const char* path)
{
    if (mount("tmpfs", path, "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") != 0)
        Fail(std::string("cannot mount a private ") + path);
}

}  // namespace

EnteredNamespaces EnterPrivateNamespaces()
{
    EnteredNamespaces entered;
    try {
        entered.ofUser = Unshare();
        MakeMountsPrivate();
        MountEmpty("/dev/shm");
        MountEmpty("/var/tmp");
    } catch (const std::system_error& error) {
        entered.refusal = error.what();
    }
    return entered;
}

}  // namespace vboard
