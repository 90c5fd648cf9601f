// The semaphore set was removed while a process was attached: its next call attaches anew.
#include <sys/ipc.h>
#include <sys/sem.h>

#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

int Count()
{
    uint8_t count = 0;
    return ETHPHY_GetNumOfPhys(&count) == 0 ? count : -1;
}

class PhyLostSemaphore : public PhyTest {
protected:
    // As another process's initialisation does, but with the region as it is.
    static void MakeSemaphoreAgain()
    {
        const int id = ::semget(::ftok("/var/tmp/ethphy_sem", 97), 1, IPC_CREAT | 0777);
        ASSERT_EQ(::semctl(id, 0, SETVAL, 1), 0);
    }

    // The shared-memory service is not started again, the mapping from before stays.
    const Lines kAttachedAnew = {"sys open(/var/tmp/ethphy_sem, O_RDWR)",
                                 "sys close()",
                                 "sys ftok(/var/tmp/ethphy_sem, 97)",
                                 "sys semget(1, 0x5FF)",
                                 kLock,
                                 "sys shm_open(/ethphy_driver, O_RDWR, 666)",
                                 "sys mmap(1332, 3, 1)",
                                 "phy3 _LoadHals:# DevIndex=0 HalImplLib=libphyk20.so HalIndex=0\n",
                                 "sys dlopen(libphyk20.so, RTLD_NOW)",
                                 kUnlock};
};

}  // namespace

TEST_F(PhyLostSemaphore, TheCallThatMeetsItFailsAndTheNextAttachesAnew)
{
    InitEnabled();
    ASSERT_EQ(Count(), 1);
    RemovePhySemaphore();
    MakeSemaphoreAgain();
    transcript.Clear();
    EXPECT_EQ(Count(), -1);
    EXPECT_STEPS(kLock, "phy1 [_System5SemOp] semop() fail, errno=22",
                 "phy1 [_ApiProlog] _ApiGlobalLock() failed");
    transcript.Clear();
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(Steps(), kAttachedAnew);
    transcript.Clear();
    EXPECT_EQ(ETHPHY_Poll(0), 0);
    EXPECT_STEPS(kLock, "hal0 Poll(0)", kUnlock);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyLostSemaphore, TheUnlockThatMeetsItLetsTheNextCallAttachAnew)
{
    InitEnabled();
    platform.slots["Poll"] = [](const SlotArgs&) {
        RemovePhySemaphore();
        return 0;
    };
    EXPECT_EQ(ETHPHY_Poll(0), 0);
    EXPECT_STEPS(kLock, "hal0 Poll(0)", kUnlock, "phy1 [_System5SemOp] semop() fail, errno=22",
                 "phy1 _LibEpilog:# _ApiGlobalUnLock failed");
    MakeSemaphoreAgain();
    transcript.Clear();
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(Steps(), kAttachedAnew);
}

TEST_F(PhyLostSemaphore, OtherErrorsForgetNothing)
{
    InitEnabled();
    platform.Fail("semop", EINTR);
    EXPECT_EQ(Count(), -1);
    transcript.Clear();
    EXPECT_EQ(Count(), 1);
    EXPECT_STEPS(kLock, kUnlock);
}
