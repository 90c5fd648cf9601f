// The network interface of a PHY, up and down.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

using PhyInterfaceState = PhyTest;

}  // namespace

TEST_F(PhyInterfaceState, UpAndDown)
{
    Init();
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 1), 0);
    EXPECT_EQ(EPHAL_SetInterfaceState(0, -1), 0);
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 0), 0);
    Record().board.serdesId = 2;
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 0), 0);
    EXPECT_EQ(EPHAL_SetInterfaceState(1, 1), 0) << "beyond the count, its lane is 0";
    EXPECT_STEPS("sys system(ifconfig nsgmii1 up)", "sys system(ifconfig nsgmii1 up)",
                 "sys system(ifconfig nsgmii1 down)", "sys system(ifconfig UNKNOWN down)",
                 "sys system(ifconfig nsgmii0 up)");
}

TEST_F(PhyInterfaceState, CommandThatCannotRun)
{
    Init();
    platform.Fail("system", ENOMEM);
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 0), -1);
    EXPECT_STEPS("sys system(ifconfig nsgmii1 down)",
                 "phy1 [EPHAL_SetInterfaceState] system(ifconfig nsgmii1 down) failed, errno=12");
    transcript.Clear();
    platform.Fail("system", 0, 1, 256);
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 0), 0) << "the command's own status does not matter";
}

TEST_F(PhyInterfaceState, OfALaneWithoutOneRunsNothing)
{
    Init();
    Record().board.serdesId = 3;
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 1), -1);
    EXPECT_EQ(EPHAL_SetInterfaceState(2, 1), -1);
    EXPECT_STEPS("phy1 EPHAL_SetInterfaceState:# Invalid serdesId=3, DevIndex=0",
                 "phy1 EPHAL_SetInterfaceState:# failed DevIndex=2");
}
