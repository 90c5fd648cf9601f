// Locks and regions under names of this process and its children: what the library asks for by the
// machine's names is here found under others.
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "common/shared_names.h"

namespace {

const pid_t owner = getpid();

struct OwnPath {
    char text[96];

    explicit OwnPath(const char* name)
    {
        snprintf(text, sizeof(text), "/dev/shm/orblink-bench-%d.%s", owner, name + 1);
    }
};

// Files of the machine that only have to be there.
bool IsMachineFile(const char* path)
{
    return strcmp(path, OB_SWITCH_KEY_FILE) == 0 || strcmp(path, OB_PHY_KEY_FILE) == 0 ||
           strcmp(path, "/dev/modphy_drv") == 0;
}

}  // namespace

extern "C" {

int shm_open(const char* name, int flags, mode_t mode)
{
    return open(OwnPath(name).text, flags | O_CLOEXEC | O_NOFOLLOW, mode);
}

int shm_unlink(const char* name)
{
    return unlink(OwnPath(name).text);
}

int open(const char* path, int flags, ...)
{
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    if (IsMachineFile(path))
        path = "/dev/null";
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

key_t ftok(const char* path, int)
{
    const int family = strcmp(path, OB_SWITCH_KEY_FILE) == 0 ? 0 : 1;
    return 0x20000000 | owner << 1 | family;
}

}  // extern "C"
