#include "tests/platform/namespaces.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace obtest {
namespace {

bool Complain(const char* what)
{
    perror(what);
    return false;
}

bool WriteFile(const char* path, const std::string& text)
{
    FILE* file = fopen(path, "w");
    if (file == nullptr)
        return Complain(path);
    fputs(text.c_str(), file);
    return fclose(file) == 0 || Complain(path);
}

bool MapUser(uid_t user, gid_t group)
{
    return WriteFile("/proc/self/setgroups", "deny") &&
           WriteFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1") &&
           WriteFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

}  // namespace

bool EnterPrivateNamespaces()
{
    const uid_t user = getuid();
    const gid_t group = getgid();
    const int extra = user == 0 ? 0 : CLONE_NEWUSER;
    if (unshare(CLONE_NEWIPC | CLONE_NEWNS | extra) != 0)
        return Complain("unshare");
    if (extra != 0 && !MapUser(user, group))
        return false;
    // In a chroot the root is no mount point: nothing to be made private there.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 && errno != EINVAL)
        return Complain("mount /");
    for (const char* folder : {"/dev/shm", "/var/tmp"})
        if (mount("tmpfs", folder, "tmpfs", 0, nullptr) != 0)
            return Complain(folder);
    return true;
}

}  // namespace obtest
