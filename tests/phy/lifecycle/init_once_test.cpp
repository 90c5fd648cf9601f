// ETHPHY_InitOnce, EP_CreatePhyDevices, EP_MapEthphyDevices.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tests/phy/phy_fixture.h"
#include "tests/robustness/watched_region.h"
#include "tests/support/interpose.h"
#include "tests/switch/call/changing_region.h"

using namespace obtest;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const Lines kCreateSem = {"sys open(/var/tmp/ethphy_sem, O_RDWR|O_CREAT, 600)", "sys close()",
                          "sys ftok(/var/tmp/ethphy_sem, 97)", "sys semget(1, 0x7FF)"};
const Lines kCreateRegion = {"sys shm_open(/ethphy_driver, O_RDWR|O_CREAT, 666)",
                             "sys ftruncate(1332)", "sys close()",
                             "phy9 [_InitPhyDevices] EP_CreatePhyDevices() Done"};
const Lines kMapRegion = {"sys shm_init(3, 0, 0)", "sys shm_open(/ethphy_driver, O_RDWR, 666)",
                          "sys mmap(1332, 3, 1)",
                          "phy9 [_InitPhyDevices] EP_MapEthphyDevices() Done"};

PhyBoard TwoPhys(const std::string& first, const std::string& second)
{
    PhyBoard board{{{}, {}}};
    board.entries[0].halLibName = first;
    board.entries[1].halLibName = second;
    return board;
}

// Takes EP_InitBoardSpecificData over while it is set.
std::function<int(EthphyBsd*)> otherBoardData;

class PhyInitOnce : public PhyTest {
protected:
    int InitOnce(const PhyBoard& board = {{{}}})
    {
        platform.mailbox.push_back(board.Message());
        return ETHPHY_InitOnce();
    }
};

}  // namespace

extern "C" int EP_InitBoardSpecificData(struct EthphyBsd* Bsd, struct PhyVendorRecord* Vendor)
{
    if (otherBoardData)
        return otherBoardData(Bsd);
    return Real<int(EthphyBsd*, PhyVendorRecord*)>("EP_InitBoardSpecificData")(Bsd, Vendor);
}

TEST_F(PhyInitOnce, CreatesMapsLoadsAndInitialisesInThisOrder)
{
    EXPECT_EQ(InitOnce(), 0);
    EXPECT_EQ(Steps(),
              kCreateSem + kCreateRegion + kMapRegion +
                  Lines({"phy3 _LoadHals:# DevIndex=0 HalImplLib=libphyk20.so HalIndex=0\n",
                         "sys dlopen(libphyk20.so, RTLD_NOW)", "hal0 Init(ptr)", kUnlock}));
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyInitOnce, WritesTheInitialValues)
{
    const int fd = ::open("/dev/shm/ethphy_driver", O_RDWR | O_CREAT, 0600);
    const std::vector<uint8_t> garbage(sizeof(PhyDeviceRegion), 0xA5);
    ASSERT_EQ(::write(fd, garbage.data(), garbage.size()), static_cast<ssize_t>(garbage.size()));
    ::close(fd);
    PhyBoard board{{{}}};
    board.ulpMode = 0x01000000;
    ASSERT_EQ(InitOnce(board), 0);

    PhyDeviceRegion expected = {};
    for (auto& record : expected.phy) {
        record.halIdx = 255;
        record.config.word12 = 1;
        record.config.word16 = 1;
        record.config.adminState = 1;
    }
    expected.phy[0].halIdx = 0;
    expected.phy[0].bsdValid = 1;
    PhyBoardEntry& entry = expected.phy[0].board;
    strcpy(entry.halLibName, "libphyk20.so");
    entry.serdesId = 1;
    entry.enableGpioPin = OB_NO_GPIO_PIN;
    entry.resetGpioPin = 19;
    entry.mdioBus = 2;
    entry.mdioAddr = 11;
    entry.portIfaceSpeed = OB_SPEED_2G5;
    entry.portIfaceMode = OB_IFACE_HSGMII;
    expected.vendor[0] = {.size = 4, .ulpModeEnabled = 1};
    expected.NumOfPhys = 1;
    EXPECT_EQ(memcmp(&PhyRegion(), &expected, sizeof(expected)), 0);
}

TEST_F(PhyInitOnce, HoldsTheLockWhileTheHalInitialises)
{
    int value = -1;
    void* privData = nullptr;
    platform.slots["Init"] = [&](const SlotArgs& args) {
        value = PhySemaphoreValue();
        privData = reinterpret_cast<void*>(args[0]);
        return 0;
    };
    ASSERT_EQ(InitOnce(), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(privData, EPHAL_GetHalPrivData(0));
}

TEST_F(PhyInitOnce, TwoPhysWithOneLibraryShareIt)
{
    ASSERT_EQ(InitOnce(TwoPhys("libphyk20.so", "libphyk20.so")), 0);
    EXPECT_THAT(transcript.Only({"hal", "sys dlopen"}),
                ElementsAre("sys dlopen(libphyk20.so, RTLD_NOW)", "hal0 Init(ptr)"));
    EXPECT_TRUE(transcript.Has("phy3 _LoadHals:# DevIndex=1 HalImplLib=libphyk20.so HalIndex=0\n"));
    EXPECT_EQ(Record(0).halIdx, 0);
    EXPECT_EQ(Record(1).halIdx, 0);
    EXPECT_EQ(PhyRegion().NumOfPhys, 2);
}

TEST_F(PhyInitOnce, TwoPhysWithTwoLibrariesGetTwoPrivateAreas)
{
    std::vector<void*> privData;
    platform.slots["Init"] = [&](const SlotArgs& args) {
        privData.push_back(reinterpret_cast<void*>(args[0]));
        return 0;
    };
    ASSERT_EQ(InitOnce(TwoPhys("libphyk20.so", "libsecond.so")), 0);
    EXPECT_THAT(
        transcript.Only({"hal", "sys dlopen"}),
        ElementsAre("sys dlopen(libphyk20.so, RTLD_NOW)", "sys dlopen(libsecond.so, RTLD_NOW)",
                    "hal0 Init(ptr)", "hal1 Init(ptr)"));
    EXPECT_EQ(Record(1).halIdx, 1);
    EXPECT_THAT(privData, ElementsAre(EPHAL_GetHalPrivData(0), EPHAL_GetHalPrivData(1)));
    EXPECT_EQ(static_cast<char*>(privData[1]) - static_cast<char*>(privData[0]), 552);
}

TEST_F(PhyInitOnce, NamesThatDifferInTheirLastByteAreTwoLibraries)
{
    const std::string first = "libname-of-thirty-two-bytes-a.so";
    const std::string second = "libname-of-thirty-two-bytes-a.sp";
    ASSERT_EQ(first.size(), 32U);
    platform.libraries[first] = "phy-a";
    platform.libraries[second] = "phy-b";
    ASSERT_EQ(InitOnce(TwoPhys(first, second)), 0);
    EXPECT_THAT(
        transcript.Only({"sys dlopen"}),
        ElementsAre("sys dlopen(" + first + ", RTLD_NOW)", "sys dlopen(" + second + ", RTLD_NOW)"));
    EXPECT_EQ(Record(1).halIdx, 1);
}

TEST_F(PhyInitOnce, ABoardWithoutPhys)
{
    EXPECT_EQ(InitOnce(PhyBoard{}), 0);
    EXPECT_EQ(Steps(), kCreateSem + kCreateRegion + kMapRegion + Lines({kUnlock}));
    transcript.Clear();
    uint8_t count = 9;
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&count), 0);
    EXPECT_EQ(count, 0);
    EXPECT_STEPS(kLock, kUnlock);
    transcript.Clear();
    EXPECT_EQ(ETHPHY_Poll(0), -1);
    EXPECT_STEPS(kLock, "phy1 [ValidateDevIndex] Invalid DevIndex=0", kUnlock);
}

TEST_F(PhyInitOnce, NoMessageMeansNoPhys)
{
    EXPECT_EQ(ETHPHY_InitOnce(), 0);
    EXPECT_EQ(PhyRegion().NumOfPhys, 0);
    EXPECT_EQ(PhyRegion().vendor[0].size, 4U);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_F(PhyInitOnce, BoardDataThatCountMorePhysThanThereAreEntriesMeanNone)
{
    otherBoardData = [](EthphyBsd* bsd) {
        bsd->numOfPhys = 3;
        return 0;
    };
    EXPECT_EQ(ETHPHY_InitOnce(), 0);
    EXPECT_EQ(PhyRegion().NumOfPhys, 0);
    EXPECT_EQ(Record(0).bsdValid, 0);
}

TEST_F(PhyInitOnce, ASecondOneFailsAndTouchesNothing)
{
    Init();
    Record().config.adminState = 77;
    EXPECT_EQ(ETHPHY_InitOnce(), -1);
    EXPECT_EQ(
        Steps(),
        kCreateSem + Lines({"phy1 [_CreateGlobalSem] semget() failed, cannot create sem, errno=17",
                            "phy1 [ETHPHY_InitOnce] _CreateGlobalSem() failed"}));
    EXPECT_EQ(Record().config.adminState, 77U);
    EXPECT_EQ(PhySemaphoreValue(), 1);
    uint8_t count = 0;
    EXPECT_EQ(ETHPHY_GetNumOfPhys(&count), 0);
}

TEST_F(PhyInitOnce, AfterTheSemaphoreWasRemovedAProcessInitialisesAgain)
{
    Init();
    RemovePhySemaphore();
    EXPECT_EQ(InitOnce(TwoPhys("libphyk20.so", "libsecond.so")), 0);
    EXPECT_FALSE(transcript.Has("shm_init")) << "once per process";
    EXPECT_THAT(transcript.Only({"sys dlopen"}), ElementsAre("sys dlopen(libphyk20.so, RTLD_NOW)",
                                                             "sys dlopen(libsecond.so, RTLD_NOW)"));
    EXPECT_EQ(PhyRegion().NumOfPhys, 2);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

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
    testing::Values(
        InitFailure{
            "open", EACCES, 1,
            Lines({kCreateSem[0], "phy1 [_CreateGlobalSem] open() failed, errno=13"}) + kNoSem, -1},
        InitFailure{"ftok", ENOENT, 1,
                    Lines({kCreateSem[0], kCreateSem[1], kCreateSem[2],
                           "phy1 [_CreateGlobalSem] ftok() failed, errno=2"}) +
                        kNoSem,
                    -1},
        InitFailure{
            "semget", ENOSPC, 1,
            kCreateSem +
                Lines({"phy1 [_CreateGlobalSem] semget() failed, cannot create sem, errno=28"}) +
                kNoSem,
            -1},
        InitFailure{
            "shm_open", EMFILE, 1,
            kCreateSem +
                Lines({kCreateRegion[0], "phy1 [EP_CreatePhyDevices] shm_open() failed, errno=24",
                       "phy1 [_InitPhyDevices] EP_CreatePhyDevices() failed"}) +
                kNoDevices,
            1},
        InitFailure{"ftruncate", ENOSPC, 1,
                    kCreateSem +
                        Lines({kCreateRegion[0], kCreateRegion[1], "sys close()",
                               "phy1 [EP_CreatePhyDevices] ftruncate() failed, errno=28",
                               "phy1 [_InitPhyDevices] EP_CreatePhyDevices() failed"}) +
                        kNoDevices,
                    1},
        InitFailure{"shm_init", 0, 1,
                    kCreateSem + kCreateRegion +
                        Lines({kMapRegion[0], "phy1 [_InitPhyDevices] shm_init() failed, Rc=-1"}) +
                        kNoDevices,
                    1},
        InitFailure{"shm_open", EMFILE, 2,
                    kCreateSem + kCreateRegion +
                        Lines({kMapRegion[0], kMapRegion[1],
                               "phy1 EP_MapEthphyDevices:# shm_open() failed, errno=24",
                               "phy1 [_InitPhyDevices] EP_MapEthphyDevices() failed"}) +
                        kNoDevices,
                    1},
        InitFailure{"mmap", ENOMEM, 1,
                    kCreateSem + kCreateRegion +
                        Lines({kMapRegion[0], kMapRegion[1], kMapRegion[2], "sys close()",
                               "phy1 EP_MapEthphyDevices:# mmap() failed, errno=12",
                               "phy1 [_InitPhyDevices] EP_MapEthphyDevices() failed"}) +
                        kNoDevices,
                    1}));

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

// Each initialisation maps anew, and the watch takes so many mappings only.
TEST_F(PhyInitOnce, CountsByTheBoardDataWhateverOthersWriteIntoTheRegion)
{
    otherBoardData = [](EthphyBsd* bsd) {
        bsd->numOfPhys = 1;
        strcpy(bsd->entry[0].halLibName, "libphyk20.so");
        WatchNewMappings();
        return 0;
    };
    for (int nth = 1; nth <= 30; ++nth) {
        int result = -1;
        RunChangingAfter(
            nth, [] { PhyRegion().NumOfPhys = 255; }, [&] { result = ETHPHY_InitOnce(); });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(PhyRegion().phy[0].halIdx, 0);
        EXPECT_EQ(PhyRegion().phy[1].halIdx, EP_NO_HAL_INDEX);
        RemovePhySemaphore();
        transcript.Clear();
    }
    otherBoardData = nullptr;
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
    EXPECT_THAT(
        transcript.Only({"hal", "phy1"}),
        ElementsAre("hal0 Init(ptr)", "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=0"));
    EXPECT_EQ(transcript.All().back(), kUnlock);
}

TEST_F(PhyInitOnce, AFailingInitOfTheSecondHal)
{
    int calls = 0;
    platform.slots["Init"] = [&](const SlotArgs&) { return ++calls == 2 ? -5 : 0; };
    EXPECT_EQ(InitOnce(TwoPhys("libphyk20.so", "libsecond.so")), 0);
    EXPECT_THAT(transcript.Only({"hal", "phy1"}),
                ElementsAre("hal0 Init(ptr)", "hal1 Init(ptr)",
                            "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=1"));
}

TEST_F(PhyInitOnce, ANullInitCountsAsAFailingOne)
{
    PhyHalTable("phy-a").Init = nullptr;
    EXPECT_EQ(InitOnce(), 0);
    EXPECT_EQ(transcript.Log().back(), "phy1 [ETHPHY_InitOnce] InitOnce() failed, HalIdx=0");
}
