// What the general PHY HAL tells the MAC behind the PHY.
#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

using Told = std::vector<GmacSetting>;

class HalMac : public HalTest {
protected:
    void MakeBehindGmac(const PhyConfig& config = WithPartner(kPhy1000Full))
    {
        phy_ = &MakeUp(config);
        halWorld.portIfaceMode = OB_IFACE_SGMII;
    }
    void Cable(OB_Speed speed, bool full)
    {
        ASSERT_TRUE(phy_->SetLink(0, true, speed, full));
        Negotiate();
    }
    PhyModel* phy_ = nullptr;
};

TEST_F(HalMac, PollTellsItTheSpeedAndDuplexOfANewLink)
{
    MakeBehindGmac();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac, (Told{{0, 1, OB_SPEED_1G, 1}}));
}

TEST_F(HalMac, PollTellsItChangesOnly)
{
    MakeBehindGmac();
    for (int poll = 0; poll < 3; ++poll)
        EXPECT_EQ(hal_.Poll(0), 0);
    Cable(OB_SPEED_100M, true);
    for (int poll = 0; poll < 3; ++poll)
        EXPECT_EQ(hal_.Poll(0), 0);
    Cable(OB_SPEED_100M, false);
    for (int poll = 0; poll < 3; ++poll)
        EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac,
              (Told{{0, 1, OB_SPEED_1G, 1}, {0, 1, OB_SPEED_100M, 1}, {0, 1, OB_SPEED_100M, 0}}));
}

TEST_F(HalMac, ALinkThatComesBackAsItWasIsNoChange)
{
    MakeBehindGmac();
    EXPECT_EQ(hal_.Poll(0), 0);
    phy_->SetLink(0, false, 0, false);
    EXPECT_EQ(hal_.Poll(0), 0);
    Cable(OB_SPEED_1G, true);
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac.size(), 1U);
}

TEST_F(HalMac, PollTellsItNothingWithoutALink)
{
    PhyConfig config;
    config.partner = NoPartner();
    MakeBehindGmac(config);
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_TRUE(halWorld.toldMac.empty());
}

TEST_F(HalMac, PollTellsItNothingWithoutAKnownSpeed)
{
    PhyConfig config = PlainPhy();
    config.partner = PartnerWith(kPhy100Full);
    MakeBehindGmac(config);
    halWorld.overrides[{-1, 5}] = 0x0020;
    halWorld.overrides[{-1, 4}] = 0x0041;
    ASSERT_EQ(Link(), (HalLink{1, OB_SPEED_UNKNOWN, 0}));
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_TRUE(halWorld.toldMac.empty());
}

TEST_F(HalMac, OnlyModesOfGigabitMacsHaveOne)
{
    struct Row {
        uint32_t mode;
        size_t told;
    };
    for (Row row : {Row{OB_IFACE_UNKNOWN, 0}, Row{OB_IFACE_MII, 0}, Row{OB_IFACE_RMII, 0},
                    Row{OB_IFACE_GMII, 1}, Row{OB_IFACE_RGMII, 1}, Row{OB_IFACE_SGMII, 1},
                    Row{OB_IFACE_HSGMII, 1}, Row{7, 0}, Row{0xFFFFFFFF, 0}}) {
        halWorld = {};
        MakeBehindGmac();
        halWorld.portIfaceMode = row.mode;
        EXPECT_EQ(hal_.Poll(0), 0);
        EXPECT_EQ(halWorld.toldMac.size(), row.told) << row.mode;
    }
}

TEST_F(HalMac, ARefusalFailsThePollAndIsTriedAgain)
{
    MakeBehindGmac();
    halWorld.gmacResult = -1;
    EXPECT_EQ(hal_.Poll(0), ETHPHY_IEEE8023_FAILED);
    halWorld.gmacResult = 0;
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac.size(), 2U);
}

TEST_F(HalMac, ItIsToldAnewAfterABringUp)
{
    MakeBehindGmac();
    EXPECT_EQ(hal_.Poll(0), 0);
    ASSERT_EQ(hal_.ResetDisable(0, 1), 0);
    Negotiate();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac.size(), 2U);
}

TEST_F(HalMac, OtherProcessesDoNotRepeatIt)
{
    MakeBehindGmac();
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_EQ(LoadHal(kDefaultHal).Poll(0), 0);
    EXPECT_EQ(halWorld.toldMac.size(), 1U);
}

TEST_F(HalMac, OnlyPollTellsIt)
{
    MakeBehindGmac();
    EXPECT_EQ(Link().up, 1U);
    Counters();
    EXPECT_TRUE(halWorld.toldMac.empty());
}

TEST_F(HalMac, ADisabledPhyTellsItNothing)
{
    MakeBehindGmac();
    halWorld.enabled = false;
    EXPECT_EQ(hal_.Poll(0), 0);
    EXPECT_TRUE(halWorld.toldMac.empty());
}

}  // namespace
}  // namespace vboard
