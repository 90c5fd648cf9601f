// The services that reach registers over MDIO, and the socket that they keep.
#include <net/if.h>

#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

const char* const kSocket = "sys socket(2, 2, 0)";

class PhyMdio : public PhyTest {
protected:
    PhyMdio()
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

TEST_F(PhyMdio, DirectReadClause22)
{
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(3, 0x1F, 0x1E, &value), 0);
    EXPECT_EQ(value, 0x1234);
    EXPECT_STEPS(kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x1F, reg=30, bus=3)",
                 "phy9 EPHAL_DirectMdioReadAccess:#: MdioBus=3 MdioAddr=0x1F Reg=0x1E Data=0x1234");
    EXPECT_THAT(requests, ElementsAre(0x8948UL));
}

TEST_F(PhyMdio, DirectWriteClause22)
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

INSTANTIATE_TEST_SUITE_P(All, PhyAddress,
                         testing::ValuesIn(std::vector<Address>{{0x00000000, 4, 0x0004, 0},
                                                                {0x0000FFFF, 4, 0x0004, 0xFFFF},
                                                                {0x001F0002, 4, 0x0004, 2},
                                                                {0x80000002, 4, 0x0004, 2},
                                                                {0x40010000, 4, 0x8081, 0},
                                                                {0x40000000, 31, 0x83E0, 0},
                                                                {0x401FFFFF, 31, 0x83FF, 0xFFFF},
                                                                {0x40200001, 2, 0x8040, 1}}));

TEST_F(PhyMdio, AtTheBoardsPlace)
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
    EXPECT_EQ(transcript.Only({"sys"}),
              (Lines{kSocket, "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x1E, reg=9, bus=7)",
                     "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x1E, reg=9, bus=7, 0x0055)",
                     "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x83C1, reg=0, bus=7)",
                     "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x83C7, reg=65535, bus=7, 0x0066)"}));
}

TEST_F(PhyMdio, AnIndexBeyondTheCountReachesNoBus)
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

TEST_F(PhyMdio, TheSocketIsOpenedOnceAndKept)
{
    uint16_t value = 0;
    EXPECT_EQ(EPHAL_DirectMdioReadAccess(0, 0, 0, &value), 0);
    EXPECT_EQ(EPHAL_DirectMdioWriteAccess(0, 0, 0, 0), 0);
    EXPECT_EQ(transcript.Only({"sys socket", "sys close"}), Lines({kSocket}));
}

TEST_F(PhyMdio, ASocketThatCannotBeOpenedIsTriedAgain)
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

TEST_F(PhyMdio, AFailingRequestClosesTheSocketAndTheNextOpensANewOne)
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

TEST_F(PhyMdio, ANameThatCannotBeCopied)
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
