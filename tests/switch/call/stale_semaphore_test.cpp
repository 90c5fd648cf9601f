// The semaphore set is removed under a process that has attached, and made again by another.
#include <sys/mman.h>
#include <sys/sem.h>

#include <cerrno>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

void RemoveSemaphore()
{
    const int id = semget(ftok("/var/tmp/orblink_sem", 97), 1, 0);
    ASSERT_NE(id, -1);
    ASSERT_EQ(semctl(id, 0, IPC_RMID), 0);
}

void RemoveRegion()
{
    ASSERT_EQ(shm_unlink("/obos_orblink_driver"), 0);
}

int StoredService()
{
    return static_cast<int>(ORBLINK_IsOrbLinkServiceOn(0));
}

class StaleSemaphore : public SwitchTest {
protected:
    // The whole way of a process's first call, with the region and the library anew.
    void ExpectTheNextCallToAttachAnew()
    {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 5), 0) << Joined(transcript.All());
        EXPECT_EQ(transcript.Only({"sys"}),
                  (Lines{"sys open(/var/tmp/orblink_sem, O_RDWR)", "sys close()",
                         "sys ftok(/var/tmp/orblink_sem, 97)", "sys semget(1, 0x5FF)",
                         "sys semop(0, -1, UNDO)",
                         "sys shm_open(/obos_orblink_driver, O_RDWR, 666)", "sys mmap(5740, 3, 1)",
                         "sys dlopen(liborblink_velmar.so, RTLD_NOW)", "sys semop(0, +1, UNDO)"}));
        EXPECT_EQ(SemaphoreValue(), 1);
    }
};

TEST_F(StaleSemaphore, FailsOneCallAsEverAndLetsTheNextAttachAnew)
{
    Init();
    RemoveSemaphore();
    RemoveRegion();
    InitElsewhere();
    transcript.Clear();
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 4), -1);
    EXPECT_LOGS("log1 _System5SemOp:# semop() fail, errno=" + std::to_string(EINVAL),
                "log1 _ApiProlog:# _ApiGlobalLock() failed",
                "log1 ORBLINK_SetOrbLinkServiceStatus:# _ApiProlog() failed, DevIdx=0");
    EXPECT_EQ(transcript.Only({"sys"}), (Lines{"sys semop(0, -1, UNDO)"}));
    ExpectTheNextCallToAttachAnew();
    EXPECT_EQ(Record(0).serviceStatus, 5U);  // of the region that stands under the name now
}

TEST_F(StaleSemaphore, MetByTheReleaseIsForgottenToo)
{
    Init();
    Record(0).config.state = OB_STATE_ENABLED;
    platform.slots["PrintMachineState"] = [](const SlotArgs&) {
        RemoveSemaphore();
        return 0;
    };
    EXPECT_EQ(ORBLINK_PrintMachineState(0), 0);
    EXPECT_LOGS("log1 _System5SemOp:# semop() fail, errno=" + std::to_string(EINVAL));
    InitElsewhere();
    ExpectTheNextCallToAttachAnew();
}

TEST_F(StaleSemaphore, ThatNobodyHasMadeAgainFailsAtSemget)
{
    Init();
    RemoveSemaphore();
    EXPECT_EQ(StoredService(), 0);
    transcript.Clear();
    EXPECT_EQ(StoredService(), 0);
    EXPECT_LOGS("log1 _InitGlobalSem:# semget() failed, errno=" + std::to_string(ENOENT),
                "log1 _ApiProlog:# _InitGlobalSem() failed",
                "log1 ORBLINK_IsOrbLinkServiceOn:# _ApiProlog() failed, DevIdx=0");
}

TEST_F(StaleSemaphore, IsForgottenWhenItWasRemovedDuringTheWait)
{
    Init();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 4), -1);
    ExpectTheNextCallToAttachAnew();
}

class OtherSemopError : public StaleSemaphore, public testing::WithParamInterface<int> {};

TEST_P(OtherSemopError, ForgetsNothing)
{
    Init();
    platform.Fail("semop", GetParam());
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 4), -1);
    transcript.Clear();
    EXPECT_EQ(ORBLINK_SetOrbLinkServiceStatus(0, 5), 0);
    EXPECT_EQ(transcript.Only({"sys"}),
              (Lines{"sys semop(0, -1, UNDO)", "sys semop(0, +1, UNDO)"}));
}

INSTANTIATE_TEST_SUITE_P(Of, OtherSemopError, testing::Values(EINTR, EACCES, ENOSPC, ERANGE));

TEST_F(StaleSemaphore, LeavesARunningCallItsRegionAndItsHal)
{
    Init();
    Record(0).config.state = OB_STATE_ENABLED;
    // The other thread's failure, as it comes in the middle of this call.
    platform.slots["DisablePort"] = [this](const SlotArgs&) {
        platform.Fail("semop", EIDRM);
        EXPECT_EQ(ORBLINK_IsOrbLinkServiceOn(0), 0U);
        EXPECT_NE(OBHAL_GetHalPrivData(0), nullptr);
        return 0;
    };
    EXPECT_EQ(ORBLINK_DisablePhyPortEee(0, 2), 0);
    EXPECT_HALS("hal0 DisablePort(0, 2)", "hal0 DisablePhyPortEee(0, 2)", "hal0 EnablePort(0, 2)");
    EXPECT_EQ(Record(0).config.eeePorts, 0x3F & ~(1 << 2));
    EXPECT_EQ(SemaphoreValue(), 1);
}

}  // namespace
