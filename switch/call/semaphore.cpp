#include "switch/call/semaphore.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>

#include "common/log.h"
#include "switch/call/process_state.h"

namespace orblink::sw {
namespace {

constexpr const char* kKeyFile = "/var/tmp/orblink_sem";
constexpr int kKeyId = 97;
constexpr int kAccess = 0777;

int _System5SemOp(int op, int flags = SEM_UNDO)
{
    sembuf operation = {};
    operation.sem_op = static_cast<short>(op);
    operation.sem_flg = static_cast<short>(flags);
    if (semop(process.semaphoreId, &operation, 1) == -1)
        return OB_ERROR("semop() fail, errno=%d", errno);
    return RC_OK;
}

}  // namespace

int _ApiGlobalLock()
{
    return _System5SemOp(-1);
}

int _ApiGlobalUnLock()
{
    return _System5SemOp(+1);
}

int _InitGlobalSem()
{
    const int fd = open(kKeyFile, O_RDWR);
    if (fd == -1)
        return OB_ERROR("open() failed, errno=%d", errno);
    close(fd);  // the file only has to exist
    const key_t key = ftok(kKeyFile, kKeyId);
    if (key == -1)
        return OB_ERROR("ftok() failed, errno=%d", errno);
    const int id = semget(key, 1, IPC_EXCL | kAccess);
    if (id == -1)
        return OB_ERROR("semget() failed, errno=%d", errno);
    process.semaphoreId = id;
    return RC_OK;
}

int _CreateGlobalSem()
{
    const int fd = open(kKeyFile, O_RDWR | O_CREAT, 0600);
    if (fd == -1)
        return OB_ERROR("open() failed, errno=%d", errno);
    close(fd);
    const key_t key = ftok(kKeyFile, kKeyId);
    if (key == -1)
        return OB_ERROR("ftok() failed, errno=%d", errno);
    const int id = semget(key, 1, IPC_CREAT | IPC_EXCL | kAccess);
    if (id == -1)
        return OB_ERROR("semget() failed, cannot create sem, errno=%d", errno);
    process.semaphoreId = id;
    // Without SEM_UNDO: the kernel would take this +1 back when the initialising process ends and
    // leave the lock held for ever.
    if (_System5SemOp(+1, 0) != RC_OK)
        return OB_ERROR("_ApiGlobalUnLock() failed");
    return RC_OK;
}

}  // namespace orblink::sw
