// The EPHAL_ services: register access and its socket, the MAC's reconfiguration, the interface.
#include <net/if.h>

#include <cerrno>
#include <cstring>

#include "tests/phy/phy_fixture.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

const char* const kSocket = "sys socket(2, 2, 0)";

class PhyServices : public PhyTest {
protected:
    PhyServices()
    {
        platform.mii = [this](unsigned long request, MiiWords& words) {
            requests.push_back(request);
            seen = words;
            words.valueOut = 0x1234;
            return true;
        };
    }

    std::vector<unsigned long> requests;
    MiiWords seen = {};
};

}  // namespace

// ---- Direct register access. It needs no board and no region.

TEST_F(PhyServices, DirectReadClause22)
{
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(3, 0x1F, 0x1E, &value), 0);
    EXPECT_EQ(value, 0x1234);
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x1F, reg=30, bus=3)",
                 "phy9 EPHAL_DirectMdioReadAccess:#: MdioBus=3 MdioAddr=0x1F Reg=0x1E Data=0x1234");
    EXPECT_THAT(requests, ElementsAre(0x8948UL));
}

TEST_F(PhyServices, DirectWriteClause22)
{
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 0, 0, 0x9000), 0);
    EXPECT_STEPS(
        kSocket, "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x0, reg=0, bus=0, 0x9000)",
        "phy9 EPHAL_DirectMdioWriteAccess:#: MdioBus=0 MdioAddr=0x00 Reg=0x00 Data=0x9000");
    EXPECT_THAT(requests, ElementsAre(0x8949UL));
}

struct Address {
    uint32_t reg;
    uint32_t mdioAddr;
    uint16_t phyId;
    uint16_t regNum;
};

void PrintTo(const Address& address, std::ostream* out)
{
    *out << std::hex << address.reg << "/" << address.mdioAddr;
}

class PhyAddress : public PhyTest, public testing::WithParamInterface<Address> {};

TEST_P(PhyAddress, IsPackedIntoTheRequest)
{
    MiiWords seen = {};
    platform.mii = [&](unsigned long, MiiWords& words) {
        seen = words;
        return true;
    };
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(1, GetParam().mdioAddr, GetParam().reg, 5), 0);
    EXPECT_EQ(seen.phyId, GetParam().phyId);
    EXPECT_EQ(seen.reg, GetParam().regNum);
    EXPECT_EQ(seen.valueIn, 5);
    EXPECT_EQ(seen.bus, 1);
}

INSTANTIATE_TEST_SUITE_P(
    All, PhyAddress,
    testing::Values(Address{0x00000000, 4, 0x0004, 0}, Address{0x0000FFFF, 4, 0x0004, 0xFFFF},
                    Address{0x001F0002, 4, 0x0004, 2}, Address{0x80000002, 4, 0x0004, 2},
                    Address{0x40010000, 4, 0x8081, 0}, Address{0x40000000, 31, 0x83E0, 0},
                    Address{0x401FFFFF, 31, 0x83FF, 0xFFFF}, Address{0x40200001, 2, 0x8040, 1}));

TEST_F(PhyServices, AtTheBoardsPlace)
{
    PhyBoard board{{{}, {}}};
    board.entries[1].mdioBus = 7;
    board.entries[1].mdioAddr = 30;
    Init(board);
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_ReadMdio(1, 9, &value), 0);
    EXPECT_EQ(value, 0x1234);
    EXPECT_EQ(EPHAL_WriteMdio(1, 9, 0x55), 0);
    EXPECT_EQ(EPHAL_ReadMmd(1, 1, 0, &value), 0);
    EXPECT_EQ(EPHAL_WriteMmd(1, 7, 0xFFFF, 0x66), 0);
    EXPECT_THAT(
        transcript.Only({"sys"}),
        ElementsAre(kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x1E, reg=9, bus=7)",
                    "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x1E, reg=9, bus=7, 0x0055)",
                    "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x83C1, reg=0, bus=7)",
                    "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x83C7, reg=65535, bus=7, 0x0066)"));
}

TEST_F(PhyServices, AnIndexBeyondTheCountReachesNoBus)
{
    Init();
    uint16_t value = 0x77;
    EXPECT_EQ(EPHAL_ReadMdio(1, 9, &value), -1);
    EXPECT_EQ(EPHAL_WriteMdio(255, 9, 1), -1);
    EXPECT_EQ(EPHAL_ReadMmd(1, 1, 9, &value), -1);
    EXPECT_EQ(EPHAL_WriteMmd(1, 1, 9, 1), -1);
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(1, 1, 1, 1), -1);
    EXPECT_STEPS(
        "phy1 EPHAL_ReadMdio:# failed DevIndex=1", "phy1 EPHAL_WriteMdio:# failed DevIndex=255",
        "phy1 EPHAL_ReadMdio:# failed DevIndex=1", "phy1 EPHAL_WriteMdio:# failed DevIndex=1",
        "phy1 EPHAL_ReconfigureGmacPhy:# failed DevIndex=1");
    EXPECT_EQ(value, 0x77);
}

// ---- The process socket.

TEST_F(PhyServices, TheSocketIsOpenedOnceAndKept)
{
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 0, 0, &value), 0);
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 0, 0, 0), 0);
    EXPECT_EQ(transcript.Only({"sys socket", "sys close"}), Lines({kSocket}));
}

TEST_F(PhyServices, ASocketThatCannotBeOpenedIsTriedAgain)
{
    uint16_t value = 0x77;
    platform.Fail("socket", EMFILE);
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 0, 0, &value), -1);
    platform.Fail("socket", EMFILE);
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 0, 0, 0), -1);
    EXPECT_STEPS(kSocket, "phy1 EPHAL_DirectMdioReadAccess:# socket failed, errno=24", kSocket,
                 "phy1 EPHAL_DirectMdioWriteAccess:# socket failed, errno=24");
    EXPECT_EQ(value, 0x77);
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 0, 0, &value), 0);
}

TEST_F(PhyServices, AFailingRequestClosesTheSocketAndTheNextOpensANewOne)
{
    uint16_t value = 0x77;
    platform.Fail("ioctl", ETIMEDOUT);
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 1, 2, &value), -1);
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x1, reg=2, bus=0)",
                 "phy1 EPHAL_DirectMdioReadAccess:# ioctl failed, errno=110", "sys close()");
    EXPECT_EQ(value, 0x77);
    transcript.Clear();
    platform.Fail("ioctl", ETIMEDOUT);
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 1, 2, 3), -1);
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x1, reg=2, bus=0, 0x0003)",
                 "phy1 EPHAL_DirectMdioWriteAccess:# ioctl failed, errno=110", "sys close()");
    transcript.Clear();
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 1, 2, 3), 0);
    EXPECT_EQ(transcript.All().front(), kSocket);
}

TEST_F(PhyServices, ANameThatCannotBeCopied)
{
    uint16_t value = 0;
    platform.FailEach("kova_strncpy_s", 0, 2, 1);
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 1, 2, &value), -1);
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 1, 2, 3), -1);
    EXPECT_STEPS(
        kSocket,
        "phy1 EPHAL_DirectMdioReadAccess:#: Runtime-constraint violation error in function "
        "kova_strncpy_s",
        "phy1 EPHAL_DirectMdioWriteAccess:#: Runtime-constraint violation error in "
        "function kova_strncpy_s");
}

// ---- EPHAL_ReconfigureGmacPhy.

namespace {

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
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCDEVPRIVATE, nsgmii1)");
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
    EXPECT_STEPS(kSocket, "phy1 EPHAL_ReconfigureGmacPhy:# socket failed, errno=24");
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
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCDEVPRIVATE, nsgmii1)",
                 "phy1 EPHAL_ReconfigureGmacPhy:# ioctl to if=nsgmii1 failed, "
                 "errno=Input/output error cmd=55 speed=1000 Duplex=2 errno=5",
                 "sys close()");
    EXPECT_THAT(transcript.Formats(),
                ElementsAre("%s:%d ioctl to if=%s failed, errno=%8s cmd=%d speed=%d Duplex=%d "
                            "errno=%d"));
    transcript.Clear();
    EXPECT_EQ(EPHAL_ReconfigureGmacPhy(0, 1, 1000, 2), 0);
    EXPECT_EQ(transcript.All().front(), kSocket);
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

// ---- EPHAL_SetInterfaceState.

TEST_F(PhyServices, InterfaceUpAndDown)
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

TEST_F(PhyServices, InterfaceCommandThatCannotRun)
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

TEST_F(PhyServices, InterfaceOfALaneWithoutOneRunsNothing)
{
    Init();
    Record().board.serdesId = 3;
    EXPECT_EQ(EPHAL_SetInterfaceState(0, 1), -1);
    EXPECT_EQ(EPHAL_SetInterfaceState(2, 1), -1);
    EXPECT_STEPS("phy1 EPHAL_SetInterfaceState:# Invalid serdesId=3, DevIndex=0",
                 "phy1 EPHAL_SetInterfaceState:# failed DevIndex=2");
}
