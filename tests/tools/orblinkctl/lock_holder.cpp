// A process that takes the lock of a family and behaves badly. lock_holder FAMILY STEP...
//   take         lock, without the kernel's promise to unlock
//   make         make the lock as an initialisation does that is cut off at once
//   map          map the region
//   wait         say so on standard output, then wait for the end
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "common/shared_names.h"

namespace {

struct Names {
    const char* keyFile;
    const char* region;
};

int Semaphore(const Names& names, int flags)
{
    const int file = open(names.keyFile, O_RDWR | (flags & IPC_CREAT ? O_CREAT : 0), 0600);
    if (file < 0)
        return -1;
    close(file);
    return semget(ftok(names.keyFile, OB_KEY_NUMBER), 1, flags | 0777);
}

bool Take(const Names& names)
{
    sembuf lock = {.sem_num = 0, .sem_op = -1, .sem_flg = 0};
    return semop(Semaphore(names, 0), &lock, 1) == 0;
}

bool Map(const Names& names)
{
    const int file = shm_open(names.region, O_RDWR, 0);
    if (file < 0)
        return false;
    // Mapped until the process ends.
    static const void* address = nullptr;
    address = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return address != MAP_FAILED && close(file) == 0;
}

bool Wait()
{
    std::puts("ready");
    std::fflush(stdout);
    pause();
    return true;
}

bool Run(const Names& names, std::string_view step)
{
    if (step == "take")
        return Take(names);
    if (step == "make")
        return Semaphore(names, IPC_CREAT | IPC_EXCL) >= 0;
    if (step == "map")
        return Map(names);
    return step == "wait" && Wait();
}

}  // namespace

int main(int argc, char** argv)
{
    const bool phy = argc > 1 && std::strcmp(argv[1], "phy") == 0;
    const Names names = phy ? Names{OB_PHY_KEY_FILE, OB_PHY_REGION_NAME}
                            : Names{OB_SWITCH_KEY_FILE, OB_SWITCH_REGION_NAME};
    for (int i = 2; i < argc; ++i) {
        if (!Run(names, argv[i])) {
            std::perror(argv[i]);
            return 1;
        }
    }
    return 0;
}
