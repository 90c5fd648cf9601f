// What ETHPHY_InitOnce logs and undoes when a step of it fails.
#include "tests/phy/lifecycle/init_once.h"

#include <cerrno>

using namespace obtest;
using testing::HasSubstr;

namespace {

// Each platform call in turn, and what is logged and undone.

struct InitFailure {
    const char* call;
    int error;
    int nth;
    Lines steps;
    int semaphore;  // value left behind
};

void PrintTo(const InitFailure& failure, std::ostream* out)
{
    *out << failure.call << " " << failure.nth;
}

class PhyInitOnceFailure : public PhyInitOnce, public testing::WithParamInterface<InitFailure> {};

TEST_P(PhyInitOnceFailure, IsLoggedAndFails)
{
    platform.Fail(GetParam().call, GetParam().error, GetParam().nth);
    EXPECT_EQ(InitOnce(), -1);
    EXPECT_THAT(Steps(), GetParam().steps);
    EXPECT_EQ(PhySemaphoreValue(), GetParam().semaphore);
}

const Lines kNoSem = {"phy1 [ETHPHY_InitOnce] _CreateGlobalSem() failed"};
const Lines kNoDevices = {"phy1 [ETHPHY_InitOnce] _InitPhyDevices() failed", kUnlock};

INSTANTIATE_TEST_SUITE_P(
    EachCall, PhyInitOnceFailure,
    testing::ValuesIn(std::vector<InitFailure>{
        {"open", EACCES, 1,
         Lines({kCreateSem[0], "phy1 [_CreateGlobalSem] open() failed, errno=13"}) + kNoSem, -1},
        {"ftok", ENOENT, 1,
         Lines({kCreateSem[0], kCreateSem[1], kCreateSem[2],
                "phy1 [_CreateGlobalSem] ftok() failed, errno=2"}) +
             kNoSem,
         -1},
        {"semget", ENOSPC, 1,
         kCreateSem +
             Lines({"phy1 [_CreateGlobalSem] semget() failed, cannot create sem, errno=28"}) +
             kNoSem,
         -1},
        {"shm_open", EMFILE, 1,
         kCreateSem +
             Lines({kCreateRegion[0], "phy1 [EP_CreatePhyDevices] shm_open() failed, errno=24",
                    "phy1 [_InitPhyDevices] EP_CreatePhyDevices() failed"}) +
             kNoDevices,
         1},
        {"ftruncate", ENOSPC, 1,
         kCreateSem +
             Lines({kCreateRegion[0], kCreateRegion[1], "sys close()",
                    "phy1 [EP_CreatePhyDevices] ftruncate() failed, errno=28",
                    "phy1 [_InitPhyDevices] EP_CreatePhyDevices() failed"}) +
             kNoDevices,
         1},
        {"shm_init", 0, 1,
         kCreateSem + kCreateRegion +
             Lines({kMapRegion[0], "phy1 [_InitPhyDevices] shm_init() failed, Rc=-1"}) + kNoDevices,
         1},
        {"shm_open", EMFILE, 2,
         kCreateSem + kCreateRegion +
             Lines({kMapRegion[0], kMapRegion[1],
                    "phy1 EP_MapEthphyDevices:# shm_open() failed, errno=24",
                    "phy1 [_InitPhyDevices] EP_MapEthphyDevices() failed"}) +
             kNoDevices,
         1},
        {"mmap", ENOMEM, 1,
         kCreateSem + kCreateRegion +
             Lines({kMapRegion[0], kMapRegion[1], kMapRegion[2], "sys close()",
                    "phy1 EP_MapEthphyDevices:# mmap() failed, errno=12",
                    "phy1 [_InitPhyDevices] EP_MapEthphyDevices() failed"}) +
             kNoDevices,
         1}}));

}  // namespace

TEST_F(PhyInitOnce, BoardDataThatCannotBeCopied)
{
    platform.FailEach("kova_memcpy_s", 0, -1, 1);
    EXPECT_EQ(InitOnce(), -1);
    const Lines log = transcript.Log();
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], "phy1 [_InitPhyDevices] _InitBoardSpecificData() failed");
    EXPECT_EQ(log.back(), "phy1 [ETHPHY_InitOnce] _InitPhyDevices() failed");
    EXPECT_EQ(transcript.All().back(), kUnlock);
}

TEST_F(PhyInitOnce, ABoardEntryThatCannotBeCopiedIntoTheRecord)
{
    platform.Fail("kova_memcpy_s", 0, 3, 22);  // after the parser's and the receiver's
    EXPECT_EQ(InitOnce(), -1);
    const Lines all = transcript.All();
    EXPECT_EQ(all[all.size() - 2],
              "phy1 ETHPHY_InitOnce:# Runtime-constraint violation error in "
              "function kova_memcpy_s");
    EXPECT_EQ(all.back(), kUnlock);
    EXPECT_EQ(PhyRegion().NumOfPhys, 0);
}

TEST_F(PhyInitOnce, AFailingUnlockIsLoggedOnly)
{
    platform.Fail("semop", EINVAL);
    EXPECT_EQ(InitOnce(), 0);
    EXPECT_EQ(transcript.All().back(), "phy1 [_System5SemOp] semop() fail, errno=22");
}

// A HAL that cannot be had does not fail the initialisation.

TEST_F(PhyInitOnce, AMissingLibraryIsOnlyLogged)
{
    platform.Fail("dlopen", ENOENT);
    EXPECT_EQ(InitOnce(), 0);
    EXPECT_THAT(
        transcript.Log(),
        testing::Contains(testing::AllOf(
            testing::StartsWith("phy1 [_LoadHals] dlopen failed, so='libphyk20.so', errno="),
            HasSubstr("/nonexistent/refused.so: cannot open shared object file"),
            testing::EndsWith(". Check SDK compilation options."))));
    EXPECT_EQ(transcript.Log().back(), "phy1 [ETHPHY_InitOnce] _LoadHals() failed");
    EXPECT_EQ(transcript.All().back(), kUnlock);
    EXPECT_EQ(PhyRegion().NumOfPhys, 1);
    EXPECT_TRUE(transcript.Only({"hal"}).empty());
}

TEST_F(PhyInitOnce, AfterAMissingLibraryEverySlotFailsInThisProcess)
{
    platform.Fail("dlopen", ENOENT);
    ASSERT_EQ(InitOnce(), 0);
    transcript.Clear();
    uint32_t link = 5;
    EXPECT_EQ(ETHPHY_GetLink(0, &link, nullptr, nullptr), -1);
    EXPECT_EQ(ETHPHY_SetAdminState(0, 1), -1);
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), -1);
    Record().board.resetGpioPin = 255;
    EXPECT_EQ(ETHPHY_ResetEnable(0), -1);
    EXPECT_EQ(EPHAL_SetHwState(0, 1), 0);
    uint16_t value = 0;
    EXPECT_EQ(ETHPHY_ReadChipReg(0, 1, &value), -1);
    EXPECT_EQ(ETHPHY_Poll(0), -1);
    EXPECT_TRUE(transcript.Only({"hal", "sys dlopen"}).empty());
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyInitOnce, AnUnnamedLibraryIsNotHandedToTheLoader)
{
    EXPECT_EQ(InitOnce(TwoPhys("", "")), 0);
    EXPECT_TRUE(transcript.Only({"sys dlopen"}).empty());
    EXPECT_THAT(
        transcript.Log(),
        testing::Contains(testing::StartsWith("phy1 [_LoadHals] dlopen failed, so='', errno=2, ")));
    EXPECT_EQ(transcript.Log().back(), "phy1 [ETHPHY_InitOnce] _LoadHals() failed");
}

TEST_F(PhyInitOnce, ALibraryWithoutTheTableIsOnlyLogged)
{
    EXPECT_EQ(InitOnce(TwoPhys("libnohal.so", "libsecond.so")), 0);
    EXPECT_THAT(transcript.Log(),
                testing::Contains(testing::AllOf(
                    testing::StartsWith("phy1 [_LoadHals] dlsym failed, sym='ETHPHY_HalFuncs', "
                                        "errno="),
                    HasSubstr("undefined symbol: ETHPHY_HalFuncs"))));
    EXPECT_FALSE(transcript.Has("dlopen(libsecond.so"));
    transcript.Clear();
    EXPECT_EQ(ETHPHY_SetAdminState(0, 1), -1) << "through a null table";
    EXPECT_EQ(transcript.Log().back(), "phy1 ETHPHY_SetAdminState:# failed Phy=0");
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyInitOnce, AFailingInitOfTheFirstHalSkipsTheSecond)
{
    platform.FailSlot("Init");
    EXPECT_EQ(InitOnce(TwoPhys("libphyk20.so", "libsecond.so")), 0);
    EXPECT_EQ(transcript.Only({"hal", "phy1"}),
              (Lines{"hal0 Init(ptr)", "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=0"}));
    EXPECT_EQ(transcript.All().back(), kUnlock);
}

TEST_F(PhyInitOnce, AFailingInitOfTheSecondHal)
{
    int calls = 0;
    platform.slots["Init"] = [&](const SlotArgs&) { return ++calls == 2 ? -5 : 0; };
    EXPECT_EQ(InitOnce(TwoPhys("libphyk20.so", "libsecond.so")), 0);
    EXPECT_EQ(transcript.Only({"hal", "phy1"}),
              (Lines{"hal0 Init(ptr)", "hal1 Init(ptr)",
                     "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=1"}));
}

TEST_F(PhyInitOnce, ANullInitCountsAsAFailingOne)
{
    PhyHalTable("phy-a").Init = nullptr;
    EXPECT_EQ(InitOnce(), 0);
    EXPECT_EQ(transcript.Log().back(), "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=0");
}
