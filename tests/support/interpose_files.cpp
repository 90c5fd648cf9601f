// What a test does to the files behind the names of the library; the library itself uses none of
// it.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/interpose.h"
#include "tests/support/private_names.h"

using namespace obtest;

OB_INTERPOSE(int, stat, const char* path, struct stat* result)
{
    return Real<int(const char*, struct stat*)>("stat")(PrivatePath(path).c_str(), result);
}

OB_INTERPOSE(int, lstat, const char* path, struct stat* result)
{
    return Real<int(const char*, struct stat*)>("lstat")(PrivatePath(path).c_str(), result);
}

OB_INTERPOSE(int, access, const char* path, int mode)
{
    return Real<int(const char*, int)>("access")(PrivatePath(path).c_str(), mode);
}

OB_INTERPOSE(int, truncate, const char* path, off_t length)
{
    return Real<int(const char*, off_t)>("truncate")(PrivatePath(path).c_str(), length);
}

OB_INTERPOSE(int, unlink, const char* path)
{
    return Real<int(const char*)>("unlink")(PrivatePath(path).c_str());
}

OB_INTERPOSE(int, shm_unlink, const char* name)
{
    return Real<int(const char*)>("shm_unlink")(PrivateObject(name).c_str());
}

OB_INTERPOSE(int, chmod, const char* path, mode_t mode)
{
    return Real<int(const char*, mode_t)>("chmod")(PrivatePath(path).c_str(), mode);
}

OB_INTERPOSE(int, chown, const char* path, uid_t user, gid_t group)
{
    return Real<int(const char*, uid_t, gid_t)>("chown")(PrivatePath(path).c_str(), user, group);
}
