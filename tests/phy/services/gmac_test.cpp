// The request that tells the SoC's Ethernet MAC its speed and duplex.
#include <net/if.h>

#include <cerrno>
#include <cstring>

#include "tests/phy/phy_fixture.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

const char* const kGmacSocket = "sys socket(2, 2, 0)";

class PhyGmac : public PhyTest {
protected:
    PhyGmac()
    {
        platform.privateIoctl = [this](void* argument) {
            memcpy(outerName, static_cast<ifreq*>(argument)->ifr_name, sizeof(outerName));
            auto* const request =
                reinterpret_cast<GmacReconfigRequest*>(static_cast<ifreq*>(argument)->ifr_data);
            memcpy(bytes, request, sizeof(bytes));
            request->Result = result;
            return 0;
        };
    }

    char outerName[IFNAMSIZ] = {};
    uint8_t bytes[32] = {};
    int32_t result = 0;
};

}  // namespace

TEST_F(PhyGmac, SendsTheRequestByteForByte)
{
    Init();
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 2500, 1), 0);
    EXPECT_STEPS(kGmacSocket, "sys ioctl(SIOCDEVPRIVATE, nsgmii1)");
    const char name[IFNAMSIZ] = "nsgmii1";
    EXPECT_EQ(memcmp(outerName, name, sizeof(name)), 0);
    EXPECT_EQ(memcmp(bytes, name, sizeof(name)), 0);
    EXPECT_THAT(std::vector<uint8_t>(bytes + 16, bytes + 32),
                ElementsAre(55, 0, 0, 0, 0xC4, 9, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(PhyGmac, WithoutSetSpeedTheSpeedIs0)
{
    Init();
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 0, 2500, -1), 0);
    EXPECT_THAT(std::vector<uint8_t>(bytes + 16, bytes + 28),
                ElementsAre(55, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF));
}

TEST_F(PhyGmac, NamesTheInterfaceByTheLowByteOfTheLane)
{
    Init();
    const std::pair<uint32_t, const char*> lanes[] = {{0, "nsgmii0"},
                                                      {1, "nsgmii1"},
                                                      {2, "UNKNOWN"},
                                                      {0xFFFFFF00, "nsgmii0"},
                                                      {0x101, "nsgmii1"}};
    for (const auto& [serdesId, name] : lanes) {
        Record().board.serdesId = serdesId;
        EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), 0);
        EXPECT_STREQ(outerName, name);
    }
}

TEST_F(PhyGmac, ALaneWithoutAnInterfaceSendsNothing)
{
    Init();
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_ReadMdio(0, 1, &value), 0);  // the socket is open
    for (uint32_t serdesId : {3U, 255U, 0xFFFFFFFFU}) {
        Record().board.serdesId = serdesId;
        transcript.Clear();
        EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
        EXPECT_STEPS("phy1 EPHAL_ReconfigureGmacPhy:# Invalid serdesId=" +
                     std::to_string(serdesId & 0xFF) + ", DevIndex=0");
    }
}

TEST_F(PhyGmac, OpensTheSocketBeforeItLooksAtTheLane)
{
    Init();
    Record().board.serdesId = 3;
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
    EXPECT_STEPS("sys socket(2, 2, 0)",
                 "phy1 EPHAL_ReconfigureGmacPhy:# Invalid serdesId=3, DevIndex=0");
}

TEST_F(PhyGmac, Failures)
{
    Init();
    platform.Fail("socket", EMFILE);
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
    EXPECT_STEPS(kGmacSocket, "phy1 EPHAL_ReconfigureGmacPhy:# socket failed, errno=24");
    for (int nth : {1, 2}) {
        transcript.Clear();
        platform.Fail("kova_strncpy_s", 0, nth, 1);
        EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
        EXPECT_EQ(transcript.All().back(),
                  "phy1 EPHAL_ReconfigureGmacPhy:#: Runtime-constraint violation error in function "
                  "kova_strncpy_s");
        EXPECT_TRUE(transcript.Only({"sys ioctl"}).empty());
    }
}

TEST_F(PhyGmac, AFailingRequestNamesItAndClosesTheSocket)
{
    Init();
    platform.Fail("ioctl", EIO);
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1000, 2), -1);
    EXPECT_STEPS(kGmacSocket, "sys ioctl(SIOCDEVPRIVATE, nsgmii1)",
                 "phy1 EPHAL_ReconfigureGmacPhy:# ioctl to if=nsgmii1 failed, "
                 "errno=Input/output error cmd=55 speed=1000 Duplex=2 errno=5",
                 "sys close()");
    EXPECT_EQ(transcript.Formats(),
              (Lines{"%s:%d ioctl to if=%s failed, errno=%8s cmd=%d speed=%d Duplex=%d "
                     "errno=%d"}));
    transcript.Clear();
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1000, 2), 0);
    EXPECT_EQ(transcript.All().front(), kGmacSocket);
}

TEST_F(PhyGmac, ANegativeAnswerOfTheDriverFailsTheCallAndKeepsTheSocket)
{
    Init();
    result = -1;
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), -1);
    EXPECT_EQ(transcript.All().back(),
              "phy1 [EPHAL_ReconfigureGmacPhy] interface update was skipped or aborted");
    result = 1;
    transcript.Clear();
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1, 1), 0);
    EXPECT_STEPS("sys ioctl(SIOCDEVPRIVATE, nsgmii1)");
}
