// ETHPHY_InitOnce, EP_CreatePhyDevices, EP_MapEthphyDevices.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "tests/phy/lifecycle/init_once.h"
#include "tests/support/changing_region.h"
#include "tests/support/interpose.h"
#include "tests/support/watched_region.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

// Takes EP_InitBoardSpecificData over while it is set.
std::function<int(EthphyBsd*)> otherBoardData;

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
    EXPECT_EQ(::write(fd, garbage.data(), garbage.size()), static_cast<ssize_t>(garbage.size()));
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
    EXPECT_EQ(transcript.Only({"hal", "sys dlopen"}),
              (Lines{"sys dlopen(libphyk20.so, RTLD_NOW)", "hal0 Init(ptr)"}));
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
    EXPECT_EQ(transcript.Only({"hal", "sys dlopen"}),
              (Lines{"sys dlopen(libphyk20.so, RTLD_NOW)", "sys dlopen(libsecond.so, RTLD_NOW)",
                     "hal0 Init(ptr)", "hal1 Init(ptr)"}));
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
    EXPECT_EQ(transcript.Only({"sys dlopen"}), (Lines{"sys dlopen(" + first + ", RTLD_NOW)",
                                                      "sys dlopen(" + second + ", RTLD_NOW)"}));
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
    EXPECT_EQ(transcript.Only({"sys dlopen"}),
              (Lines{"sys dlopen(libphyk20.so, RTLD_NOW)", "sys dlopen(libsecond.so, RTLD_NOW)"}));
    EXPECT_EQ(PhyRegion().NumOfPhys, 2);
    EXPECT_EQ(PhySemaphoreValue(), 1);
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
