#include "bench/ready_board.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "common/shared_names.h"

namespace bench {
namespace {

constexpr const char* kHalLibrary = "libempty_hal.so";

[[noreturn]] void GiveUp(const char* what)
{
    perror(what);
    exit(1);
}

template <typename Region>
Region* CreateRegion(const char* name)
{
    const int fd = shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600);
    if (fd < 0 || ftruncate(fd, sizeof(Region)) != 0)
        GiveUp(name);
    void* const at = mmap(nullptr, sizeof(Region), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (at == MAP_FAILED)
        GiveUp(name);
    close(fd);
    return static_cast<Region*>(at);
}

int CreateLock(key_t key)
{
    const int id = semget(key, 1, IPC_CREAT | (key == IPC_PRIVATE ? 0 : IPC_EXCL) | 0700);
    if (id == -1 || semctl(id, 0, SETVAL, 1) != 0)
        GiveUp("semaphore");
    return id;
}

}  // namespace

ReadyBoard::ReadyBoard()
    : switches_(CreateRegion<SwitchDeviceRegion>(OB_SWITCH_REGION_NAME)),
      phys_(CreateRegion<PhyDeviceRegion>(OB_PHY_REGION_NAME)),
      switchLock_(CreateLock(ftok(OB_SWITCH_KEY_FILE, OB_KEY_NUMBER))),
      phyLock_(CreateLock(ftok(OB_PHY_KEY_FILE, OB_KEY_NUMBER))),
      bare_(CreateLock(IPC_PRIVATE))
{
    SwitchDeviceRecord& record = switches_->device[kSwitch];
    record.capsValid = 1;
    record.caps.numOfPorts = OB_MAX_PORTS;
    record.configValid = 1;
    record.config.state = OB_STATE_ENABLED;
    record.bsdValid = 1;
    snprintf(record.board.halLibName, sizeof(record.board.halLibName), "%s", kHalLibrary);
    switches_->NumOfSwitches = 1;
    PhyDeviceRecord& phy = phys_->phy[kPhy];
    phy.config.hwState = EP_HW_STATE_ENABLED;
    phy.bsdValid = 1;
    snprintf(phy.board.halLibName, sizeof(phy.board.halLibName), "%s", kHalLibrary);
    phys_->NumOfPhys = 1;
}

ReadyBoard::~ReadyBoard()
{
    for (const int lock : {switchLock_, phyLock_, bare_})
        semctl(lock, 0, IPC_RMID);
    munmap(switches_, sizeof(*switches_));
    munmap(phys_, sizeof(*phys_));
    shm_unlink(OB_SWITCH_REGION_NAME);
    shm_unlink(OB_PHY_REGION_NAME);
}

}  // namespace bench
