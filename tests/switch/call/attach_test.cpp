// The first call of a process that did not initialise the family.
#include <cerrno>

#include "tests/switch/call/other_process.h"

using namespace obtest;

namespace {

int CountSwitches()
{
    uint8_t count = 0xEE;
    return ORBLINK_GetNumOfSwitches(&count) == 0 ? count : -1;
}

class Attach : public SwitchTest {
protected:
    // The next call works, whatever went wrong before it.
    void ExpectTheNextCallToWork()
    {
        transcript.Clear();
        EXPECT_EQ(CountSwitches(), 1) << Joined(transcript.All());
        EXPECT_EQ(SemaphoreValue(), 1);
    }
};

TEST_F(Attach, OpensTheSemaphoreMapsTheRegionAndLoadsTheHals)
{
    InitElsewhere();
    EXPECT_EQ(CountSwitches(), 1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetNumOfSwitches:# ", "sys open(/var/tmp/orblink_sem, O_RDWR)",
                      "sys close()", "sys ftok(/var/tmp/orblink_sem, 97)", "sys semget(1, 0x5FF)",
                      "sys semop(0, -1, UNDO)", "sys shm_open(/obos_orblink_driver, O_RDWR, 666)",
                      "sys mmap(5740, 3, 1)", "sys dlopen(liborblink_velmar.so, RTLD_NOW)",
                      "sys semop(0, +1, UNDO)");
}

TEST_F(Attach, HappensOnceForEachProcess)
{
    InitElsewhere();
    CountSwitches();
    transcript.Clear();
    EXPECT_EQ(CountSwitches(), 1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetNumOfSwitches:# ", "sys semop(0, -1, UNDO)",
                      "sys semop(0, +1, UNDO)");
}

TEST_F(Attach, LoadsEachDistinctLibraryWithoutCallingInit)
{
    InitElsewhere(SwitchBoard::With({{}, {.halLibName = "liborblink_second.so"}}));
    EXPECT_EQ(CountSwitches(), 2);
    EXPECT_EQ(transcript.Only({"sys dlopen", "hal"}),
              (Lines{"sys dlopen(liborblink_velmar.so, RTLD_NOW)",
                     "sys dlopen(liborblink_second.so, RTLD_NOW)"}));
}

TEST_F(Attach, LoadsASharedLibraryOnce)
{
    InitElsewhere(SwitchBoard::With({{}, {}}));
    EXPECT_EQ(CountSwitches(), 2);
    CountSwitches();
    EXPECT_EQ(transcript.Only({"sys dlopen"}),
              (Lines{"sys dlopen(liborblink_velmar.so, RTLD_NOW)"}));
}

TEST_F(Attach, WithZeroSwitchesLoadsNothing)
{
    InitElsewhere(SwitchBoard());
    EXPECT_EQ(CountSwitches(), 0);
    EXPECT_THAT(transcript.Only({"sys dlopen"}), testing::IsEmpty());
}

TEST_F(Attach, BeforeInitialisationFailsForWantOfTheKeyFile)
{
    EXPECT_EQ(CountSwitches(), -1);
    EXPECT_LOGS("log1 _InitGlobalSem:# open() failed, errno=" + std::to_string(ENOENT),
                "log1 _ApiProlog:# _InitGlobalSem() failed",
                "log1 ORBLINK_GetNumOfSwitches:# _ApiProlog() failed");
    EXPECT_EQ(transcript.Only({"sys"}).size(), 1U);
}

TEST_F(Attach, WithAKeyFileButNoSemaphoreFailsAtSemget)
{
    fclose(fopen("/var/tmp/orblink_sem", "w"));
    EXPECT_EQ(CountSwitches(), -1);
    EXPECT_LOGS("log1 _InitGlobalSem:# semget() failed, errno=" + std::to_string(ENOENT),
                "log1 _ApiProlog:# _InitGlobalSem() failed",
                "log1 ORBLINK_GetNumOfSwitches:# _ApiProlog() failed");
    EXPECT_EQ(SemaphoreValue(), -1);
}

struct FailingCall {
    const char* name;
    const char* call;
    int error;
    Lines logs;
    const char* last;
};

class AttachFailingCall : public Attach, public testing::WithParamInterface<FailingCall> {};

TEST_P(AttachFailingCall, FailsTheCallLeavesTheLockFreeAndIsTriedAgain)
{
    InitElsewhere();
    platform.Fail(GetParam().call, GetParam().error);
    EXPECT_EQ(CountSwitches(), -1);
    Lines logs = GetParam().logs;
    logs[0] += std::to_string(GetParam().error);
    logs.push_back("log1 ORBLINK_GetNumOfSwitches:# _ApiProlog() failed");
    EXPECT_EQ(transcript.Log(), logs);
    EXPECT_EQ(transcript.Only({"sys"}).back(), GetParam().last);
    EXPECT_EQ(SemaphoreValue(), 1);
    ExpectTheNextCallToWork();
}

INSTANTIATE_TEST_SUITE_P(
    Calls, AttachFailingCall,
    testing::ValuesIn(std::vector<FailingCall>{
        {"Open",
         "open",
         EACCES,
         {"log1 _InitGlobalSem:# open() failed, errno=",
          "log1 _ApiProlog:# _InitGlobalSem() failed"},
         "sys open(/var/tmp/orblink_sem, O_RDWR)"},
        {"Ftok",
         "ftok",
         EACCES,
         {"log1 _InitGlobalSem:# ftok() failed, errno=",
          "log1 _ApiProlog:# _InitGlobalSem() failed"},
         "sys ftok(/var/tmp/orblink_sem, 97)"},
        {"Semget",
         "semget",
         EACCES,
         {"log1 _InitGlobalSem:# semget() failed, errno=",
          "log1 _ApiProlog:# _InitGlobalSem() failed"},
         "sys semget(1, 0x5FF)"},
        {"Lock",
         "semop",
         EIDRM,
         {"log1 _System5SemOp:# semop() fail, errno=", "log1 _ApiProlog:# _ApiGlobalLock() failed"},
         "sys semop(0, -1, UNDO)"},
        {"InterruptedLock",
         "semop",
         EINTR,
         {"log1 _System5SemOp:# semop() fail, errno=", "log1 _ApiProlog:# _ApiGlobalLock() failed"},
         "sys semop(0, -1, UNDO)"},
        {"ShmOpen",
         "shm_open",
         ENOENT,
         {"log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# shm_open() failed, "
          "errno=",
          "log1 _ApiProlog:# OBOS_MapSwitchDevices() failed"},
         "sys semop(0, +1, UNDO)"},
        {"Mmap",
         "mmap",
         ENOMEM,
         {"log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# mmap() failed, errno=",
          "log1 _ApiProlog:# OBOS_MapSwitchDevices() failed"},
         "sys semop(0, +1, UNDO)"}}),
    [](const auto& info) { return info.param.name; });

TEST_F(Attach, KeepsWhatAFailedCallHasAttachedAlready)
{
    InitElsewhere();
    platform.Fail("dlopen", ENOENT);
    EXPECT_EQ(CountSwitches(), -1);
    transcript.Clear();
    EXPECT_EQ(CountSwitches(), 1);
    EXPECT_EQ(transcript.Only({"sys"}),
              (Lines{"sys semop(0, -1, UNDO)", "sys dlopen(liborblink_velmar.so, RTLD_NOW)",
                     "sys semop(0, +1, UNDO)"}));
}

TEST_F(Attach, AnInitialiserThatFailedEarlyLeavesAFamilyThatRefusesCalls)
{
    // The region exists but has no size: nothing of it may be touched.
    OtherProcess initialiser([] {
        Platform().Fail("ftruncate", EFBIG);
        return std::to_string(ORBLINK_InitOnce(1));
    });
    ASSERT_EQ(initialiser.Run(), "-1");
    EXPECT_EQ(CountSwitches(), -1);
    EXPECT_TRUE(transcript.Has("log1 _ApiProlog:# OBOS_MapSwitchDevices() failed"));
    EXPECT_EQ(SemaphoreValue(), 1);
}

}  // namespace
