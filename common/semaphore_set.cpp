#include "common/semaphore_set.h"

#include <fcntl.h>
#include <sys/ipc.h>

#include <cerrno>

#include "common/descriptor.h"
#include "common/shared_names.h"

namespace orblink {
namespace {

constexpr int kAccess = 0777;
constexpr int kKeyFileAccess = 0600;

SemaphoreSet FindSet(const char* keyFile, int openFlags, int semgetFlags)
{
    if (const Descriptor file{open(keyFile, openFlags, kKeyFileAccess)}; !file)
        return {-1, SemaphoreStep::kOpen, errno};
    const key_t key = ftok(keyFile, OB_KEY_NUMBER);
    if (key == -1)
        return {-1, SemaphoreStep::kFtok, errno};
    const int id = semget(key, 1, semgetFlags);
    if (id == -1)
        return {-1, SemaphoreStep::kSemget, errno};
    return {id, SemaphoreStep::kDone, 0};
}

}  // namespace

SemaphoreSet OpenSemaphoreSet(const char* keyFile)
{
    return FindSet(keyFile, O_RDWR, IPC_EXCL | kAccess);
}

SemaphoreSet CreateSemaphoreSet(const char* keyFile)
{
    return FindSet(keyFile, O_RDWR | O_CREAT, IPC_CREAT | IPC_EXCL | kAccess);
}

bool MeansSetIsGone(int error)
{
    return error == EINVAL || error == EIDRM;
}

}  // namespace orblink
