#include "tools/orblinkctl/access/held_lock.h"

#include <sys/sem.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>

namespace ctl {

namespace {

int Lock(int semaphore, double seconds)
{
    sembuf operation = {.sem_num = 0, .sem_op = -1, .sem_flg = SEM_UNDO};
    timespec wait = {};
    wait.tv_sec = static_cast<time_t>(seconds);
    wait.tv_nsec = static_cast<long>((seconds - std::floor(seconds)) * 1e9);
    return semtimedop(semaphore, &operation, 1, &wait);
}

}  // namespace

HeldLock::HeldLock(Family family, int semaphore, double seconds) : semaphore_(semaphore)
{
    using Steady = std::chrono::steady_clock;
    const auto end = Steady::now() + std::chrono::duration<double>(seconds);
    while (Lock(semaphore, seconds) != 0) {
        if (errno != EINTR)
            throw Failure{errno == EAGAIN ? kBusy : kFailed,
                          std::string("the lock of the ") + NamesOf(family).name +
                              " family: " + std::strerror(errno)};
        seconds = std::max(0.0, std::chrono::duration<double>(end - Steady::now()).count());
    }
}

HeldLock::~HeldLock()
{
    sembuf operation = {.sem_num = 0, .sem_op = 1, .sem_flg = SEM_UNDO};
    // Fails when the set was removed meanwhile, and then there is nothing to unlock.
    (void)semop(semaphore_, &operation, 1);
}

}  // namespace ctl
