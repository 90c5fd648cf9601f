// Init, reset and what keeps them from going on.
#include <cstring>

#include "tests/hals/linux_switch/kernel_bench.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST_F(LinuxSwitch, InitFailsWithoutAMappingAndWithABadOne)
{
    unlink((directory + "/linux-switch-0.toml").c_str());
    EXPECT_NE(Init(), 0);
    EXPECT_THAT(log, ElementsAre("There is no mapping file linux-switch-0.toml"));
    log.clear();
    WriteMapping("bridge = \"br0\"\ncpu_port = 9\n");
    EXPECT_NE(Init(), 0);
    EXPECT_THAT(log, ElementsAre(directory + "/linux-switch-0.toml:2: expected a port, 0 to 7"));
}

TEST_F(LinuxSwitch, InitRefusesAMappingThatIsNoFile)
{
    unlink((directory + "/linux-switch-0.toml").c_str());
    Sh("mkdir " + directory + "/linux-switch-0.toml");
    EXPECT_NE(Init(), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("Cannot read")));
}

TEST_F(LinuxSwitch, ResetMakesTheBridgeAndTakesThePortsIn)
{
    BringUp();
    for (const char* port : {"lan1", "lan2", "lan3"}) {
        const auto link = Json(std::string("ip -j -d link show ") + port);
        EXPECT_EQ(link[0]["master"], "br0") << port;
        EXPECT_EQ(link[0]["linkinfo"]["info_slave_data"]["isolated"], false) << port;
        EXPECT_THAT(link[0]["flags"].dump(), HasSubstr("\"UP\"")) << port;
    }
    const auto bridge = Json("ip -j -d link show br0")[0]["linkinfo"]["info_data"];
    EXPECT_EQ(bridge["mcast_snooping"], 0);
    EXPECT_EQ(bridge["stp_state"], 0);
    EXPECT_TRUE(log.empty());
}

TEST_F(LinuxSwitch, ResetTouchesOnlyWhatTheMappingNames)
{
    Sh("ip link add br1 type bridge; ip link add other type veth peer name rehto\n"
       "ip link set other master br1; ip link set br1 mtu 1400");
    const auto before = Sh("ip -d link show other; ip -d link show rehto");
    BringUp();
    EXPECT_EQ(Sh("ip -d link show other; ip -d link show rehto"), before);
}

TEST_F(LinuxSwitch, ResetSaysWhichInterfaceIsMissingAndChangesNothing)
{
    Sh("ip link delete lan2");
    ASSERT_EQ(Init(), 0);
    const std::string before = KernelState();
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(log, ElementsAre("Cannot take in port interface lan2, DevIdx=0: "
                                 "there is no such interface, errno=19"));
    EXPECT_EQ(KernelState(), before);
}

TEST_F(LinuxSwitch, ResetSaysWhichInterfaceIsInAnotherBridge)
{
    Sh("ip link add br1 type bridge; ip link set lan3 master br1");
    ASSERT_EQ(Init(), 0);
    const std::string before = KernelState();
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    ASSERT_EQ(log.size(), 1u);
    EXPECT_THAT(log[0], HasSubstr("a part of another bridge or bond, lan3, DevIdx=0: it belongs"));
    EXPECT_EQ(KernelState(), before);
}

TEST_F(LinuxSwitch, ABridgeOfSomebodyElsesIsNotMadeHere)
{
    WriteMapping(
        "bridge = \"br0\"\ncpu_port = 0\non_reset = \"settings\"\n[ports]\n1 = \"lan1\"\n");
    ASSERT_EQ(Init(), 0);
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("Cannot use the bridge br0")));
    Sh("ip link add br0 type bridge");
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(log.back(), HasSubstr("which is in no bridge, lan1"));
    Sh("ip link set lan1 master br0");
    EXPECT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
}

TEST_F(LinuxSwitch, AnInterfaceInPlaceOfTheBridgeIsNone)
{
    WriteMapping("bridge = \"host1\"\ncpu_port = 0\n[ports]\n1 = \"lan1\"\n");
    ASSERT_EQ(Init(), 0);
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("which is none, host1")));
}

TEST_F(LinuxSwitch, TheBoardsInternalPortIsTheCpuPort)
{
    internalPort = 1;
    ASSERT_EQ(Init(), 0);
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(log, ElementsAre("The board's internal port is not the mapping's cpu_port 0, "
                                 "DevIdx=0"));
}

TEST_F(LinuxSwitch, IsolationOfTheVendorParametersKeepsThePortsApart)
{
    const uint32_t apart[2] = {1, 0};
    ASSERT_EQ(Init(), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, apart, sizeof apart), 0);
    for (const char* port : {"lan1", "lan2", "lan3"})
        EXPECT_EQ(Json(std::string("ip -j -d link show ") +
                       port)[0]["linkinfo"]["info_slave_data"]["isolated"],
                  true);
    // Kept until it is given anew.
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_THAT(Sh("ip -d link show lan1"), HasSubstr("isolated on"));
    EXPECT_NE(Hal().ResetSwitch(0, apart, 3), 0);
    const uint32_t together[2] = {0, 0};
    ASSERT_EQ(Hal().ResetSwitch(0, together, sizeof together), 0);
    EXPECT_THAT(Sh("ip -d link show lan1"), HasSubstr("isolated off"));
}

TEST_F(LinuxSwitch, CapabilitiesHaveThePortsOfTheMapping)
{
    BringUp();
    SwitchCaps caps{};
    ASSERT_EQ(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_EQ(caps.numOfPorts, 4);
    EXPECT_EQ(caps.capsFlags, OB_CAPS_MIRRORING);  // a veth has no EEE
    EXPECT_EQ(caps.port[0].portHasPhy, 0u);
    EXPECT_EQ(caps.port[3].portHasPhy, 1u);
}

TEST_F(LinuxSwitch, ASlotOfASwitchWithoutAMappingFails)
{
    BringUp();
    EXPECT_NE(Hal().EnablePort(1, 1), 0);
    EXPECT_NE(Hal().EnablePort(-1, 1), 0);
    EXPECT_NE(Hal().EnablePort(2, 1), 0);
    EXPECT_THAT(log, ElementsAre("Switch has no mapping of its ports, DevIdx=1",
                                 "Switch has no mapping of its ports, DevIdx=-1",
                                 "Switch has no mapping of its ports, DevIdx=2"));
}

TEST_F(LinuxSwitch, DamagedPrivateDataAreNoMapping)
{
    BringUp();
    for (size_t at = 0; at < OB_HAL_PRIV_DATA_SIZE; ++at) {
        const uint8_t whole = privateData[1 + at];
        privateData[1 + at] = 0xFF;
        uint32_t link = 0;
        Hal().GetPortLink(0, 1, &link, nullptr, nullptr);
        privateData[1 + at] = whole;
    }
    memset(privateData, 0xFF, sizeof privateData);
    EXPECT_NE(Hal().EnablePort(0, 1), 0);
}
