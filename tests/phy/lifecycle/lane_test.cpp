// The SerDes lane: ETHPHY_ResetSgmii and the check inside ETHPHY_ResetDisable.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

const char* const kOpenDriver = "sys open(/dev/modphy_drv, O_RDONLY)";

class PhyLane : public PhyTest {
protected:
    PhyLane()
    {
        platform.slots["GetLink"] = [this](const SlotArgs& args) {
            *reinterpret_cast<uint32_t*>(args[1]) = link;
            return 0;
        };
        platform.mii = [this](unsigned long, MiiWords& words) {
            words.valueOut = status;
            return true;
        };
    }

    static PhyBoard BoardWithoutPin(const std::string& library = "libphyk20.so")
    {
        PhyBoard board{{{}}};
        board.entries[0].resetGpioPin = 255;
        board.entries[0].halLibName = library;
        return board;
    }

    // What stands between the HAL's reset and the ULP line.
    Lines CheckSteps() const
    {
        const Lines all = Steps();
        const auto from = std::find(all.begin(), all.end(), "hal0 ResetDisable(0, 0)");
        const auto to =
            std::find(all.begin(), all.end(), "phy3 [ETHPHY_ResetDisable] PHY0 ULP = 0");
        return from == all.end() ? Lines({"no reset"}) : Lines(from + 1, to);
    }

    uint32_t link = 1;
    uint16_t status = 0;
};

const char* const kGetLink = "hal0 GetLink(0, ptr, null, null)";
const char* const kSocket = "sys socket(2, 2, 0)";
const char* const kReadStatus = "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x817F, reg=3619, bus=2)";
const std::string kStatusLine =
    "phy9 EPHAL_DirectMdioReadAccess:#: MdioBus=2 MdioAddr=0x0B Reg=0x401F0E23 Data=0x";
const char* const kResetLane = "sys ioctl(MODPHY_RESET_LANE, 6)";

}  // namespace

TEST_F(PhyLane, IsLeftWhenThePhySaysItIsInOrder)
{
    Init(BoardWithoutPin());
    status = 0xA5A1;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(), (Lines{kGetLink, kSocket, kReadStatus, kStatusLine + "A5A1"}));
}

TEST_F(PhyLane, IsResetWhenTheBitIsClear)
{
    Init(BoardWithoutPin());
    status = 0xFFFE;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(), (Lines{kGetLink, kSocket, kReadStatus, kStatusLine + "FFFE",
                                   kOpenDriver, kResetLane, "sys close()"}));
}

TEST_F(PhyLane, IsLeftWhileTheLinkIsDown)
{
    Init(BoardWithoutPin());
    link = 0;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(), (Lines{kGetLink}));
}

TEST_F(PhyLane, IsLeftWhenThePhyIsNotAccessible)
{
    Init(BoardWithoutPin());
    platform.FailSlot("GetLink");
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(),
              (Lines{kGetLink, "phy1 _IsResetSgmiiRequired.# External phy 0 is not accessible"}));
    EXPECT_THAT(transcript.Formats(), testing::Contains("%s.%d External phy %d is not accessible"));
}

TEST_F(PhyLane, IsResetWhenTheStatusCannotBeRead)
{
    Init(BoardWithoutPin());
    platform.Fail("ioctl", EIO);
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(),
              (Lines{kGetLink, kSocket, kReadStatus,
                     "phy1 EPHAL_DirectMdioReadAccess:# ioctl failed, errno=5", "sys close()",
                     "phy1 _IsResetSgmiiRequired:# ETHPHY_ReadMmd() failed", kOpenDriver,
                     kResetLane, "sys close()"}));
}

TEST_F(PhyLane, IsResetWithoutAValidBoardEntry)
{
    Init(BoardWithoutPin());
    Record().bsdValid = 0;
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(), (Lines{kOpenDriver, kResetLane, "sys close()"}));
}

TEST_F(PhyLane, IsResetForEveryOtherLibrary)
{
    for (const char* name : {"libphyk20.so.1", "libphyk20.s", "libphyk21.so", "Libphyk20.so"})
        platform.libraries[name] = "phy-a";
    Init(BoardWithoutPin("libphyk20.so.1"));
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps(), (Lines{kOpenDriver, kResetLane, "sys close()"}));
    for (const char* name : {"libphyk20.s", "libphyk21.so", "Libphyk20.so"}) {
        snprintf(Record().board.halLibName, OB_HAL_NAME_SIZE, "%s", name);
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
        EXPECT_EQ(CheckSteps(), (Lines{kOpenDriver, kResetLane, "sys close()"}));
    }
}

TEST_F(PhyLane, AFailingLaneResetDoesNotFailTheBringUp)
{
    Init(BoardWithoutPin());
    platform.Fail("open", ENOENT);
    EXPECT_EQ(ETHPHY_ResetDisable(0, 0), 0);
    EXPECT_EQ(CheckSteps().back(), "phy1 [_ResetSgmii] open failed, errno=2");
}

// ---- ETHPHY_ResetSgmii.

struct Lane {
    uint32_t serdesId;
    uint32_t speed;
    int client;  // 0: the lane is not reset
};

void PrintTo(const Lane& lane, std::ostream* out)
{
    *out << lane.serdesId << "/" << lane.speed;
}

class PhyLaneClient : public PhyTest, public testing::WithParamInterface<Lane> {};

TEST_P(PhyLaneClient, FollowsFromLaneAndSpeed)
{
    InitEnabled();
    Record().board.serdesId = GetParam().serdesId;
    Record().board.portIfaceSpeed = GetParam().speed;
    EXPECT_EQ(ETHPHY_ResetSgmii(0), 0);
    if (GetParam().client == 0)
        EXPECT_STEPS(kLock, kUnlock);
    else
        EXPECT_STEPS(kLock, kOpenDriver,
                     "sys ioctl(MODPHY_RESET_LANE, " + std::to_string(GetParam().client) + ")",
                     "sys close()", kUnlock);
}

INSTANTIATE_TEST_SUITE_P(All, PhyLaneClient,
                         testing::ValuesIn(std::vector<Lane>{{0, OB_SPEED_1G, 3},
                                                             {1, OB_SPEED_1G, 4},
                                                             {0, OB_SPEED_2G5, 5},
                                                             {1, OB_SPEED_2G5, 6},
                                                             {0, OB_SPEED_10G, 3},
                                                             {1, 0, 4},
                                                             {1, 0xFFFFFFFF, 4},
                                                             {2, OB_SPEED_1G, 0},
                                                             {0x101, OB_SPEED_1G, 0},
                                                             {0xFFFFFFFF, OB_SPEED_2G5, 0}}));

TEST_F(PhyLane, ResetFailuresAreLoggedAndIgnored)
{
    InitEnabled();
    platform.Fail("open", EACCES);
    EXPECT_EQ(ETHPHY_ResetSgmii(0), 0);
    EXPECT_STEPS(kLock, kOpenDriver, "phy1 [_ResetSgmii] open failed, errno=13", kUnlock);
    transcript.Clear();
    platform.Fail("ioctl", EIO);
    EXPECT_EQ(ETHPHY_ResetSgmii(0), 0);
    EXPECT_STEPS(kLock, kOpenDriver, kResetLane, "phy1 [_ResetSgmii] ioctl failed, errno=5",
                 "sys close()", kUnlock);
}

TEST_F(PhyLane, ResetTakesAnIndexBeyondTheCount)
{
    InitEnabled();
    EXPECT_EQ(ETHPHY_ResetSgmii(1), 0);
    EXPECT_STEPS(kLock, kOpenDriver, "sys ioctl(MODPHY_RESET_LANE, 3)", "sys close()", kUnlock);
}

TEST_F(PhyLane, ResetBeyondTheRegionDoesNothing)
{
    InitEnabled();
    for (int index : {2, 3, 255}) {
        transcript.Clear();
        EXPECT_EQ(ETHPHY_ResetSgmii(static_cast<uint8_t>(index)), 0);
        EXPECT_STEPS(kLock, kUnlock);
    }
}

TEST_F(PhyLane, ResetWorksInAnyStateAndFailsOnlyWithItsProlog)
{
    Init();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    EXPECT_EQ(ETHPHY_ResetSgmii(0), 0);
    transcript.Clear();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(ETHPHY_ResetSgmii(0), -1);
    EXPECT_STEPS(kLock, "phy1 [_System5SemOp] semop() fail, errno=43",
                 "phy1 [_ApiProlog] _ApiGlobalLock() failed",
                 "phy1 ETHPHY_ResetSgmii:# _ApiProlog() failed");
}
