// The first call of a process: the prolog that attaches it.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

const Lines kOpenSem = {"sys open(/var/tmp/ethphy_sem, O_RDWR)", "sys close()",
                        "sys ftok(/var/tmp/ethphy_sem, 97)", "sys semget(1, 0x5FF)"};
const Lines kMap = {"sys shm_init(3, 0, 0)", "sys shm_open(/ethphy_driver, O_RDWR, 666)",
                    "sys mmap(1332, 3, 1)"};
const Lines kLoad = {"phy3 _LoadHals:# DevIndex=0 HalImplLib=libphyk20.so HalIndex=0\n",
                     "sys dlopen(libphyk20.so, RTLD_NOW)"};

int CountOfPhys()
{
    uint8_t count = 0;
    return ETHPHY_GetNumOfPhys(&count) == 0 ? count : -1;
}

// What is left of the transcript after lines with a newline in their text were cut at it.
Lines Uncut(const Lines& lines)
{
    Lines uncut;
    for (const std::string& line : lines)
        if (line.empty())
            uncut.back() += "\n";
        else
            uncut.push_back(line);
    return uncut;
}

class PhyAttach : public PhyTest {};

}  // namespace

TEST_F(PhyAttach, WithoutAnInitialisedFamilyEveryCallFails)
{
    EXPECT_EQ(CountOfPhys(), -1);
    EXPECT_STEPS(kOpenSem[0], "phy1 [_InitGlobalSem] open() failed, errno=2",
                 "phy1 [_ApiProlog] _InitGlobalSem() failed");
    transcript.Clear();
    EXPECT_EQ(ETHPHY_Poll(0), -1);
    EXPECT_EQ(transcript.All().back(), "phy1 ETHPHY_Poll:# _ApiProlog() failed");
}

TEST_F(PhyAttach, ARegionThatIsTooShortIsNotMapped)
{
    ASSERT_EQ(EP_CreatePhyDevices(), 0);
    ASSERT_EQ(truncate("/dev/shm/ethphy_driver", 1331), 0);
    transcript.Clear();
    EXPECT_EQ(EP_MapEthphyDevices(), nullptr);
    EXPECT_STEPS(kMap[1], "sys close()",
                 "phy1 EP_MapEthphyDevices:# the region /ethphy_driver is shorter than 1332 bytes");
}

TEST_F(PhyAttach, AFreshProcessMapsLoadsAndNeverInitialises)
{
    FreshProcess other([] { return CountOfPhys(); });
    Init();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, 1);
    EXPECT_EQ(Uncut(report.transcript),
              kOpenSem + Lines({kLock}) + kMap + kLoad + Lines({kUnlock}));
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyAttach, AFreshProcessAttachesOnce)
{
    FreshProcess other([] {
        CountOfPhys();
        Platform().transcript.Clear();
        return CountOfPhys();
    });
    Init();
    EXPECT_EQ(other.Run().transcript, (Lines{kLock, kUnlock}));
}

TEST_F(PhyAttach, AFreshProcessSeesTheSameState)
{
    FreshProcess other([] { return ETHPHY_SetAdminState(0, 0); });
    InitEnabled();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, 0);
    EXPECT_THAT(report.transcript, testing::Contains("hal0 SetAdminState(0, 0)"));
    EXPECT_EQ(Record().config.adminState, 0U);
}

TEST_F(PhyAttach, AFreshProcessOfABoardWithoutPhysLoadsNothing)
{
    FreshProcess other([] { return CountOfPhys(); });
    Init(PhyBoard{});
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, 0);
    EXPECT_EQ(report.transcript, kOpenSem + Lines({kLock}) + kMap + Lines({kUnlock}));
}

TEST_F(PhyAttach, ASecondInitOnceOfAnotherProcessFails)
{
    FreshProcess other([] { return ETHPHY_InitOnce(); });
    Init();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, -1);
    EXPECT_THAT(
        report.transcript,
        testing::Contains("phy1 [_CreateGlobalSem] semget() failed, cannot create sem, errno=17"));
    EXPECT_EQ(CountOfPhys(), 1);
}

TEST_F(PhyAttach, AMissingLibraryFailsTheFirstCallOfAProcess)
{
    FreshProcess other([] {
        Platform().Fail("dlopen", ENOENT);
        return CountOfPhys();
    });
    Init();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, -1);
    EXPECT_EQ(report.transcript[report.transcript.size() - 2],
              "phy1 [_ApiProlog] _LoadHals() failed");
    EXPECT_EQ(report.transcript.back(), kUnlock);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyAttach, AfterAMissingLibraryTheProcessKeepsItsMappingAndSlotsFail)
{
    FreshProcess other([] {
        Platform().Fail("dlopen", ENOENT);
        CountOfPhys();
        Platform().transcript.Clear();
        return ETHPHY_SetAdminState(0, 1);
    });
    InitEnabled();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, -1);
    EXPECT_EQ(report.transcript, (Lines{"phy9 ETHPHY_SetAdminState:# DevIndex=0 Enable=1", kLock,
                                        "phy1 ETHPHY_SetAdminState:# failed Phy=0", kUnlock}));
}

TEST_F(PhyAttach, AHalIndexThatIsGarbageFailsTheFirstCallOfAProcess)
{
    FreshProcess other([] { return CountOfPhys(); });
    Init();
    Record().halIdx = 2;
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, -1);
    EXPECT_EQ(Uncut(report.transcript),
              kOpenSem + Lines({kLock}) + kMap +
                  Lines({"phy3 _LoadHals:# DevIndex=0 HalImplLib=libphyk20.so HalIndex=2\n",
                         "phy1 _LoadHals:# Invalid HalIndex=2, DevIndex=0",
                         "phy1 [_ApiProlog] _LoadHals() failed", kUnlock}));
}

TEST_F(PhyAttach, ALibraryNameWithoutAnEndIsCutAt32Characters)
{
    FreshProcess other([] {
        Platform().libraries[std::string(32, 'x')] = "phy-a";
        return CountOfPhys();
    });
    Init();
    memset(Record().board.halLibName, 'x', OB_HAL_NAME_SIZE);
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, 1);
    EXPECT_THAT(report.transcript,
                testing::Contains("sys dlopen(" + std::string(32, 'x') + ", RTLD_NOW)"));
}

TEST_F(PhyAttach, ACountThatIsGarbageLoadsNothing)
{
    FreshProcess other([] { return CountOfPhys(); });
    Init();
    PhyRegion().NumOfPhys = 200;
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, -1);
    EXPECT_EQ(report.transcript,
              kOpenSem + Lines({kLock}) + kMap +
                  Lines({"phy1 ETHPHY_GetNumOfPhys:# Invalid NumOfPhys=200", kUnlock}));
}

TEST_F(PhyAttach, TheLockStaysHeldWhenAProcessDiesInsideACall)
{
    FreshProcess other([]() -> int {
        Platform().slots["Poll"] = [](const SlotArgs&) -> int { _exit(3); };
        return ETHPHY_Poll(0);
    });
    InitEnabled();
    EXPECT_THROW(other.Run(), std::exception) << "it must not live to report";
    EXPECT_EQ(PhySemaphoreValue(), 0);
}

// Each call of the prolog in turn.

struct PrologFailure {
    const char* call;
    int error;
    Lines steps;
};

void PrintTo(const PrologFailure& failure, std::ostream* out)
{
    *out << failure.call;
}

class PhyProlog : public PhyTest, public testing::WithParamInterface<PrologFailure> {};

TEST_P(PhyProlog, FailureIsLoggedAndTheNextCallTriesAgain)
{
    FreshProcess other([] {
        Platform().Fail(GetParam().call, GetParam().error);
        const int first = CountOfPhys();
        Platform().transcript.Add("again");
        return first == -1 ? CountOfPhys() : 99;
    });
    Init();
    const ProcessReport report = other.Run();
    EXPECT_EQ(report.result, 1);
    const Lines lines = Uncut(report.transcript);
    const auto again = std::find(lines.begin(), lines.end(), "again");
    EXPECT_EQ(Lines(lines.begin(), again), GetParam().steps);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    EachCall, PhyProlog,
    testing::ValuesIn(std::vector<PrologFailure>{
        {"open",
         EACCES,
         {kOpenSem[0], "phy1 [_InitGlobalSem] open() failed, errno=13",
          "phy1 [_ApiProlog] _InitGlobalSem() failed"}},
        {"ftok",
         ENOENT,
         {kOpenSem[0], kOpenSem[1], kOpenSem[2], "phy1 [_InitGlobalSem] ftok() failed, errno=2",
          "phy1 [_ApiProlog] _InitGlobalSem() failed"}},
        {"semget", ENOENT,
         kOpenSem + Lines({"phy1 [_InitGlobalSem] semget() failed, errno=2",
                           "phy1 [_ApiProlog] _InitGlobalSem() failed"})},
        {"semop", EINTR,
         kOpenSem + Lines({kLock, "phy1 [_System5SemOp] semop() fail, errno=4",
                           "phy1 [_ApiProlog] _ApiGlobalLock() failed"})},
        {"shm_init", 0,
         kOpenSem + Lines({kLock, kMap[0], "phy1 [_ApiProlog] shm_init() failed, Rc=-1", kUnlock})},
        {"shm_open", EACCES,
         kOpenSem + Lines({kLock, kMap[0], kMap[1],
                           "phy1 EP_MapEthphyDevices:# shm_open() failed, errno=13",
                           "phy1 [_ApiProlog] shm_get() failed", kUnlock})},
        {"mmap", ENOMEM,
         kOpenSem + Lines({kLock, kMap[0], kMap[1], kMap[2], "sys close()",
                           "phy1 EP_MapEthphyDevices:# mmap() failed, errno=12",
                           "phy1 [_ApiProlog] shm_get() failed", kUnlock})}}));
