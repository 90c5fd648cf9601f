// ORBLINK_InitOnce when something fails: what is logged, what is left, whether the lock is free.
#include <cerrno>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

struct FailingCall {
    const char* name;
    const char* call;
    int nth;
    int error;
    Lines logs;        // "E" stands for the error number
    int semaphore;     // -1 none, 0 held, 1 free
    const char* last;  // the last platform call that is made
};

class InitOnceFailingCall : public SwitchTest, public testing::WithParamInterface<FailingCall> {};

Lines WithErrno(Lines lines, int error)
{
    for (auto& line : lines)
        if (line.size() > 7 && line.substr(line.size() - 7) == "errno=E")
            line.replace(line.size() - 1, 1, std::to_string(error));
    return lines;
}

TEST_P(InitOnceFailingCall, FailsWithTheMessagesOfTheStep)
{
    const FailingCall& failing = GetParam();
    platform.mailbox.push_back(SwitchBoard::With({{}}).Message());
    platform.Fail(failing.call, failing.error, failing.nth);
    EXPECT_EQ(ORBLINK_InitOnce(1), -1);
    EXPECT_EQ(transcript.Log(), WithErrno(failing.logs, failing.error));
    EXPECT_EQ(transcript.Only({"sys"}).back(), failing.last);
    EXPECT_EQ(SemaphoreValue(), failing.semaphore);
}

const char* const kRelease = "sys semop(0, +1, UNDO)";

INSTANTIATE_TEST_SUITE_P(
    Calls, InitOnceFailingCall,
    testing::ValuesIn(std::vector<FailingCall>{
        {"OpenOfTheKeyFile",
         "open",
         1,
         EACCES,
         {"log1 _CreateGlobalSem:# open() failed, errno=E",
          "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed"},
         -1,
         "sys open(/var/tmp/orblink_sem, O_RDWR|O_CREAT, 600)"},
        {"Ftok",
         "ftok",
         1,
         ENOENT,
         {"log1 _CreateGlobalSem:# ftok() failed, errno=E",
          "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed"},
         -1,
         "sys ftok(/var/tmp/orblink_sem, 97)"},
        {"Semget",
         "semget",
         1,
         ENOSPC,
         {"log1 _CreateGlobalSem:# semget() failed, cannot create sem, errno=E",
          "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed"},
         -1,
         "sys semget(1, 0x7FF)"},
        {"FirstRelease",
         "semop",
         1,
         EACCES,
         {"log1 _System5SemOp:# semop() fail, errno=E",
          "log1 _CreateGlobalSem:# _ApiGlobalUnLock() failed",
          "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed"},
         0,
         "sys semop(0, +1, 0)"},
        {"Lock",
         "semop",
         2,
         EINTR,
         {"log1 _System5SemOp:# semop() fail, errno=E",
          "log1 ORBLINK_InitOnce:# _ApiGlobalLock() failed"},
         1,
         "sys semop(0, -1, UNDO)"},
        {"ShmOpenToCreate",
         "shm_open",
         1,
         EMFILE,
         {"log1 OBOS_CreateSwitchDevices:# shm_open() failed, errno=E",
          "log1 _InitSwitchDevices:# OBOS_CreateSwitchDevices() failed",
          "log1 ORBLINK_InitOnce:# _InitSwitchDevices() failed"},
         1,
         kRelease},
        {"Ftruncate",
         "ftruncate",
         1,
         EFBIG,
         {"log1 OBOS_CreateSwitchDevices:# ftruncate() failed, errno=E",
          "log1 _InitSwitchDevices:# OBOS_CreateSwitchDevices() failed",
          "log1 ORBLINK_InitOnce:# _InitSwitchDevices() failed"},
         1,
         kRelease},
        {"ShmOpenToMap",
         "shm_open",
         2,
         EACCES,
         {"log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# shm_open() failed, "
          "errno=E",
          "log1 _InitSwitchDevices:# OBOS_MapSwitchDevices() failed",
          "log1 ORBLINK_InitOnce:# _InitSwitchDevices() failed"},
         1,
         kRelease},
        {"Mmap",
         "mmap",
         1,
         ENOMEM,
         {"log1 OBOS_MapSwitchDevices:# OBOS_MapSwitchDevices:# mmap() failed, errno=E",
          "log1 _InitSwitchDevices:# OBOS_MapSwitchDevices() failed",
          "log1 ORBLINK_InitOnce:# _InitSwitchDevices() failed"},
         1,
         kRelease}}),
    [](const auto& info) { return info.param.name; });

class InitOnceFailure : public SwitchTest {
protected:
    // The log lines of ORBLINK_InitOnce and its own steps.
    Lines Fail(const SwitchBoard& board, uint32_t arg = 1)
    {
        platform.mailbox.push_back(board.Message());
        EXPECT_EQ(ORBLINK_InitOnce(arg), -1);
        EXPECT_EQ(SemaphoreValue(), 1);
        EXPECT_EQ(transcript.All().back(), "sys semop(0, +1, UNDO)");
        Lines lines = transcript.Log();
        std::erase_if(lines, [](const auto& line) { return line.rfind("log3", 0) == 0; });
        return lines;
    }

    const SwitchBoard twoLibraries =
        SwitchBoard::With({{}, {.halLibName = "liborblink_second.so"}});
};

TEST_F(InitOnceFailure, OfTheBoardDataCopy)
{
    // The first copy is the parser's own.
    platform.Fail("kova_memcpy_s", 0, 2, 22);
    EXPECT_EQ(Fail(SwitchBoard::With({{}})),
              (Lines{"log1 OBOS_InitHwSpecificData:# ERROR: OBOS_InitHwSpecificData:#: "
                     "Runtime-constraint violation error in function kova_memcpy_s",
                     "log1 _InitSwitchDevices:# OBOS_InitHwSpecificData() failed",
                     "log1 ORBLINK_InitOnce:# _InitSwitchDevices() failed"}));
}

TEST_F(InitOnceFailure, OfALibraryThatCannotBeLoaded)
{
    SwitchBoard::Entry entry;
    entry.halLibName = "libnowhere.so";
    const Lines lines = Fail(SwitchBoard::With({entry}));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0],
                testing::StartsWith("log1 _LoadHals:# dlopen failed, so='libnowhere.so', errno="));
    EXPECT_EQ(lines[1], "log1 ORBLINK_InitOnce:# _LoadHals() failed");
    EXPECT_THAT(transcript.Only({"hal"}), testing::IsEmpty());
    EXPECT_EQ(Record(0).bsdValid, 1);
    EXPECT_EQ(Region().NumOfSwitches, 1);
}

TEST_F(InitOnceFailure, OfTheFirstHalsInit)
{
    platform.FailSlot("Init");
    EXPECT_EQ(Fail(twoLibraries), (Lines{"log1 ORBLINK_InitOnce:# InitOnce() failed, HalIdx=0"}));
    EXPECT_HALS("hal0 Init(ptr)");
}

TEST_F(InitOnceFailure, OfTheSecondHalsInit)
{
    int calls = 0;
    platform.slots["Init"] = [&](const SlotArgs&) { return ++calls == 2 ? 1 : 0; };
    EXPECT_EQ(Fail(twoLibraries), (Lines{"log1 ORBLINK_InitOnce:# InitOnce() failed, HalIdx=1"}));
    EXPECT_HALS("hal0 Init(ptr)", "hal1 Init(ptr)");
}

TEST_F(InitOnceFailure, OfALibraryWithoutInit)
{
    HalTable("a").Init = nullptr;
    EXPECT_EQ(Fail(SwitchBoard::With({{}})),
              (Lines{"log1 ORBLINK_InitOnce:# InitOnce() failed, HalIdx=0"}));
}

TEST_F(InitOnceFailure, OfALibraryWithoutGetSwitchCaps)
{
    HalTable("a").GetSwitchCaps = nullptr;
    EXPECT_EQ(Fail(SwitchBoard::With({{}})),
              (Lines{"log1 ORBLINK_InitOnce:# Calling GetSwitchCaps() , DevIdx=0",
                     "log1 ORBLINK_InitOnce:# GetSwitchCaps() failed, DevIdx=0"}));
    EXPECT_EQ(Record(0).capsValid, 0);
}

TEST_F(InitOnceFailure, OfTheSecondSwitchsCapabilitiesKeepsTheFirstOnes)
{
    const auto readCaps = platform.slots["GetSwitchCaps"];
    platform.slots["GetSwitchCaps"] = [&](const SlotArgs& args) {
        return args[0] == 0 ? readCaps(args) : 3;
    };
    EXPECT_EQ(Fail(SwitchBoard::With({{}, {}})),
              (Lines{"log1 ORBLINK_InitOnce:# Calling GetSwitchCaps() , DevIdx=0",
                     "log1 ORBLINK_InitOnce:# Return GetSwitchCaps() , DevIdx=0",
                     "log1 ORBLINK_InitOnce:# Calling GetSwitchCaps() , DevIdx=1",
                     "log1 ORBLINK_InitOnce:# GetSwitchCaps() failed, DevIdx=1"}));
    EXPECT_EQ(Record(0).capsValid, 1);
    EXPECT_EQ(Record(0).configValid, 1);
    EXPECT_EQ(Record(0).config.mtuSize, 2000);
    EXPECT_EQ(Record(1).capsValid, 0);
    EXPECT_EQ(Record(1).configValid, 0);
    EXPECT_EQ(Record(1).config.mtuSize, 0);
    EXPECT_EQ(Record(0).rxResetAfterSerdes, 0U);
}

TEST_F(InitOnceFailure, LeavesTheSemaphoreSoThatARetryIsRefused)
{
    platform.FailSlot("Init");
    Fail(SwitchBoard::With({{}}));
    platform.slots.erase("Init");
    transcript.Clear();
    EXPECT_EQ(ORBLINK_InitOnce(1), -1);
    EXPECT_LOGS("log1 _CreateGlobalSem:# semget() failed, cannot create sem, errno=" +
                    std::to_string(EEXIST),
                "log1 ORBLINK_InitOnce:# _CreateGlobalSem() failed");
}

TEST_F(InitOnceFailure, OfTheLastReleaseIsLoggedButDoesNotFailTheCall)
{
    platform.mailbox.push_back(SwitchBoard::With({{}}).Message());
    platform.Fail("semop", EINVAL, 3);
    EXPECT_EQ(ORBLINK_InitOnce(0), 0);
    EXPECT_EQ(transcript.All().back(),
              "log1 _System5SemOp:# semop() fail, errno=" + std::to_string(EINVAL));
}

}  // namespace
