#include "virtual_board/program/machine_names.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>

#include "virtual_board/board/system_failure.h"
#include "virtual_board/board/wire.h"

namespace vboard {
namespace {

constexpr int kSemaphoreKeyId = 97;
// Abstract: it needs no file and goes with its last holder.
constexpr char kLockName[] = "\0orblink-vboard/machine-names";

UniqueFd TakeLock()
{
    UniqueFd lock{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, kLockName, sizeof kLockName - 1);
    const auto length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + sizeof kLockName - 1);
    if (bind(lock.Get(), reinterpret_cast<sockaddr*>(&address), length) == 0)
        return lock;
    if (errno == EADDRINUSE)
        throw std::runtime_error("another board has the machine's own names");
    Fail("cannot take the machine's own names");
}

void RefuseNamesInUse()
{
    for (const char* path : wire::kPrivatePaths)
        if (access(path, F_OK) == 0)
            throw std::runtime_error(
                std::string("the machine's own names are in use: ") + path +
                " exists; it is another system's, or left by one that was killed");
}

// The key of a semaphore comes from its file, so the file goes last. What is not there, or another
// user's, stays: nobody is left to be told.
void RemoveAll()
{
    for (const char* path : wire::kPrivatePaths) {
        const key_t key = ftok(path, kSemaphoreKeyId);
        const int id = key == -1 ? -1 : semget(key, 0, 0);
        if (id != -1)
            semctl(id, 0, IPC_RMID);  // results dropped: what somebody has removed is gone
        unlink(path);
    }
}

}  // namespace

MachineNames::MachineNames() : lock_{TakeLock()}
{
    RefuseNamesInUse();
    StartKeeper();
}

// A process of its own, which a signal to the board or to its terminal does not reach, holds the lock
// until everything is removed.
void MachineNames::StartKeeper()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        Fail("cannot make a pipe");
    UniqueFd ended{ends[0]};
    alive_ = UniqueFd{ends[1]};
    keeper_ = fork();
    if (keeper_ == -1)
        Fail("cannot start a process");
    if (keeper_ != 0)
        return;
    setsid();
    for (int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT})
        ::signal(signal, SIG_IGN);
    alive_ = UniqueFd{};
    for (int fd : {0, 1, 2})
        close(fd);  // result dropped: one that was not open is as good
    char never = 0;
    while (read(ended.Get(), &never, 1) == -1 && errno == EINTR) {
    }
    RemoveAll();
    _exit(0);
}

MachineNames::~MachineNames()
{
    alive_ = UniqueFd{};
    waitpid(keeper_, nullptr, 0);
}

}  // namespace vboard
