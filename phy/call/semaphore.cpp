#include "phy/call/semaphore.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>
#include <cerrno>

#include "phy/call/region.h"

namespace orblink::phy {

namespace {

constexpr const char* kKeyFile = "/var/tmp/ethphy_sem";
constexpr int kKeyId = 97;
constexpr int kAccess = 0777;

}  // namespace

int _InitGlobalSem()
{
    const int fd = open(kKeyFile, O_RDWR);
    if (fd < 0)
        return EP_ERROR("open() failed, errno=%d", errno);
    close(fd);
    const key_t key = ftok(kKeyFile, kKeyId);
    if (key == -1)
        return EP_ERROR("ftok() failed, errno=%d", errno);
    const int id = semget(key, 1, IPC_EXCL | kAccess);
    if (id < 0)
        return EP_ERROR("semget() failed, errno=%d", errno);
    process.semId = id;
    return RC_OK;
}

int _CreateGlobalSem()
{
    const int fd = open(kKeyFile, O_RDWR | O_CREAT, 0600);
    if (fd < 0)
        return EP_ERROR("open() failed, errno=%d", errno);
    close(fd);
    const key_t key = ftok(kKeyFile, kKeyId);
    if (key == -1)
        return EP_ERROR("ftok() failed, errno=%d", errno);
    const int id = semget(key, 1, IPC_CREAT | IPC_EXCL | kAccess);
    if (id < 0)
        return EP_ERROR("semget() failed, cannot create sem, errno=%d", errno);
    process.semId = id;
    return RC_OK;
}

int _System5SemOp(short op)
{
    sembuf operation = {.sem_num = 0, .sem_op = op, .sem_flg = 0};
    if (semop(process.semId, &operation, 1) != 0)
        return EP_ERROR("semop() fail, errno=%d", errno);
    return RC_OK;
}

}  // namespace orblink::phy
