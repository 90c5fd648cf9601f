// Interfaces that go away and come back.
#include "tests/hals/linux_switch/kernel_bench.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class LinuxSwitchRevival : public LinuxSwitch {
protected:
    // Any slot looks for what has come back.
    void CallASlot()
    {
        uint32_t link = 0;
        EXPECT_EQ(Hal().GetPortLink(0, 2, &link, nullptr, nullptr), 0);
    }
};

TEST_F(LinuxSwitchRevival, AnInterfaceHasItsMtuAgain)
{
    BringUp();
    ASSERT_EQ(Hal().SetMtuSize(0, 1018), 0);
    Sh("ip link delete lan1; ip link add lan1 type veth peer name host1");
    CallASlot();
    EXPECT_EQ(Json("ip -j link show lan1")[0]["mtu"], 1000);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(Json("ip -j link show lan1")[0]["mtu"], 1500);
}

TEST_F(LinuxSwitchRevival, ABridgeIsTheSwitchAgain)
{
    const uint32_t apart = 1;
    ASSERT_EQ(Init(), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, &apart, sizeof apart), 0);
    ASSERT_EQ(Hal().SetMacAging(0, 1), 0);
    ASSERT_EQ(Hal().EnableIgmpSnooping(0), 0);
    ASSERT_EQ(Hal().DisablePort(0, 1), 0);
    Sh("ip link delete br0");
    uint32_t link = 0;
    EXPECT_NE(Hal().GetPortLink(0, 2, &link, nullptr, nullptr), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("Cannot use the bridge br0, DevIdx=0: there is no")));
    log.clear();
    Sh("ip link add br0 type bridge");
    CallASlot();
    const auto bridge = Json("ip -j -d link show br0")[0];
    EXPECT_EQ(bridge["linkinfo"]["info_data"]["ageing_time"], 1500);
    EXPECT_EQ(bridge["linkinfo"]["info_data"]["mcast_snooping"], 1);
    EXPECT_THAT(bridge["flags"].dump(), HasSubstr("\"UP\""));
    for (const char* port : {"lan1", "lan2", "lan3"}) {
        const auto shown = Json(std::string("ip -j -d link show ") + port)[0];
        EXPECT_EQ(shown["master"], "br0") << port;
        EXPECT_EQ(shown["linkinfo"]["info_slave_data"]["isolated"], true) << port;
    }
    EXPECT_THAT(Sh("ip link show lan1"), HasSubstr("state DOWN"));
    EXPECT_TRUE(log.empty()) << ::testing::PrintToString(log);
}

TEST_F(LinuxSwitchRevival, ABridgeHasItsVlansAgain)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0x88A8), 0);
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 100), 0);
    Sh("ip link delete br0; ip link add br0 type bridge");
    CallASlot();
    EXPECT_EQ(Vlans("lan1"), "100 pvid untagged");
    EXPECT_EQ(Vlans("lan2"), "1 pvid untagged");
    EXPECT_EQ(Vlans("br0"), "1 pvid, 100");
    const auto data = Json("ip -j -d link show br0")[0]["linkinfo"]["info_data"];
    EXPECT_EQ(data["vlan_filtering"], 1);
    EXPECT_EQ(data["vlan_protocol"], "802.1ad");
}

TEST_F(LinuxSwitchRevival, APortThatSomebodyTookOutIsNotInTheBridge)
{
    BringUp();
    Sh("ip link set lan1 nomaster");
    EXPECT_NE(Hal().SetLanPortPcp(0, 1, 0), 0);
    EXPECT_THAT(log, ElementsAre("Cannot use port interface, which is not in the bridge, lan1, "
                                 "DevIdx=0: it belongs to something else, errno=16"));
    EXPECT_EQ(Hal().SetLanPortPcp(0, 2, 0), 0);
}
