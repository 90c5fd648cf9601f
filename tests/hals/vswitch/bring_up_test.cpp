// Bring-up through the HAL: Init, reset, capabilities and the ioctl.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/hals/vswitch/hal_bench.h"

namespace {

using namespace std::chrono_literals;

TEST(VswitchHal, HasAll42Slots)
{
    void* slots[42];
    std::memcpy(slots, &Hal(), sizeof slots);
    for (void* slot : slots)
        EXPECT_NE(slot, nullptr);
}

TEST(VswitchHal, GetSwitchCapsDescribesTheChip)
{
    HalBench bench;
    SwitchCaps caps;
    std::memset(&caps, 0xAA, sizeof caps);
    ASSERT_EQ(Hal().GetSwitchCaps(1, &caps), 0);
    EXPECT_EQ(caps.capsFlags, OB_CAPS_EEE | OB_CAPS_MIRRORING);
    EXPECT_EQ(caps.numOfPorts, 8);
    const uint8_t own[] = {0x08, 0x56, 0x10, 0x00, 4};
    EXPECT_EQ(std::memcmp(caps.halDefined, own, 5), 0);
    EXPECT_EQ(caps.halDefined2, 0);
    const uint32_t types[] = {6, 3, 3, 3, 6, 3, 3, 4};
    for (unsigned port = 0; port < 8; ++port) {
        EXPECT_EQ(caps.port[port].portIfaceType, types[port]) << port;
        EXPECT_EQ(caps.port[port].portHasPhy, types[port] == 3 ? 1u : 0u) << port;
        EXPECT_EQ(caps.port[port].halDefined, port == 4 ? VSWITCH_PORT_INTERNAL : 0u) << port;
    }
    EXPECT_NE(Hal().GetSwitchCaps(0, nullptr), 0);
}

TEST(VswitchHal, GetSwitchCapsWaitsForABootingChipAndFailsInReset)
{
    HalBench bench;
    SwitchCaps caps{};
    bench.device[0].chip.SetResetLine(true);
    EXPECT_NE(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_EQ(caps.numOfPorts, 0);
    EXPECT_EQ(bench.accesses, 1);
    bench.device[0].chip.SetResetLine(false);
    EXPECT_EQ(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_EQ(caps.numOfPorts, 8);
    EXPECT_GE(bench.slept, 19ms);
    EXPECT_LE(bench.slept, 24ms);
}

TEST(VswitchHal, BringUpInTheLibrarysOrder)
{
    HalBench bench;
    vboard::VswitchChip& chip = bench.device[0].chip;
    for (unsigned port = 0; port < 8; ++port)
        ASSERT_TRUE(chip.SetLink(port, true, 1, true));
    SwitchCaps caps;
    ASSERT_EQ(Hal().Init(bench.privateData + 1), 0);
    ASSERT_EQ(Hal().GetSwitchCaps(0, &caps), 0);

    chip.SetResetLine(true);
    ObhalPreReset preReset = {1, 0xF5};
    bench.accesses = 0;
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_PRE_RESET, &preReset), 0);
    EXPECT_EQ(bench.accesses, 0);
    bench.Wait(200ms);
    chip.SetResetLine(false);
    const uint32_t vendor[2] = {1, 0};
    ASSERT_EQ(Hal().ResetSwitch(0, vendor, sizeof vendor), 0);
    EXPECT_EQ(bench.PortRegister(0, 0x1C), 1 | 5 << 1 | 1 << 4) << "HSGMII, receive inverted";
    EXPECT_EQ(bench.Register(0x0110), 1);

    for (int port = 0; port < 8; ++port)
        ASSERT_EQ(Hal().DisablePort(0, port), 0) << port;
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0x88A8), 0);
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 1, 4), 0);
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 100), 0);
    ASSERT_EQ(Hal().SetLanPortPcp(0, 1, 5), 0);
    ASSERT_EQ(Hal().SetLanPortEgressTagging(0, 1, 1), 0);
    const uint8_t mac[] = {2, 3, 4, 5, 0xFF, 0xFF};
    ASSERT_EQ(Hal().MapSetMacToVlan(0, 1, mac, 0xFF0, 200, 1), 0);
    ASSERT_EQ(Hal().SetMacAging(0, 3), 0);
    ASSERT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_100M, 0), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 2), 0);
    ASSERT_EQ(Hal().EnableRgmiiDelay(0, 7), 0);
    ASSERT_EQ(Hal().EnableIgmpSnooping(0), 0);
    ASSERT_EQ(Hal().SetMtuSize(0, 1518), 0);
    ASSERT_EQ(Hal().SetLEDConfig(0, 3), 0);
    for (int port = 0; port < 8; ++port)
        ASSERT_EQ(Hal().EnablePort(0, port), 0) << port;
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_RX_RESET, nullptr), 0);
    for (int port = 1; port < 7; ++port) {
        ASSERT_EQ(Hal().SetPhyPortSpeedDuplex(0, port, OB_SPEED_AUTONEG, 1), 0) << port;
        ASSERT_EQ(Hal().EnablePhyPortEee(0, port), 0) << port;
    }

    uint32_t link = 0, speed = 0, duplex = 0;
    ASSERT_EQ(Hal().GetPortLink(0, 0, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 1u);
    EXPECT_EQ(speed, uint32_t{OB_SPEED_2G5});
    EXPECT_EQ(duplex, 1u);
    EXPECT_EQ(chip.Read22(2), 3);
}

TEST(VswitchHal, ResetSwitchClearsAnEarlierConfiguration)
{
    HalBench bench;
    bench.BringUp();
    ASSERT_EQ(Hal().SetMtuSize(0, 900), 0);
    ASSERT_TRUE(bench.device[0].chip.SetLink(1, true, 1, true));
    ASSERT_TRUE(bench.device[0].chip.Learn({2, 0, 0, 0, 0, 1}, 1, 1));
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(bench.Register(0x0114), 2000);
    EXPECT_EQ(bench.Register(0x0208), 0);
}

TEST(VswitchHal, IsolationIsKeptUntilParametersComeAgain)
{
    HalBench bench;
    bench.BringUp();
    EXPECT_EQ(bench.Register(0x0110), 0);
    uint32_t flag = 0x100;
    ASSERT_EQ(Hal().ResetSwitch(0, &flag, 4), 0);
    EXPECT_EQ(bench.Register(0x0110), 1);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 8), 0);
    EXPECT_EQ(bench.Register(0x0110), 1);
    uint32_t none = 0;
    ASSERT_EQ(Hal().ResetSwitch(0, &none, 0), 0) << "a switch without stored parameters";
    EXPECT_EQ(bench.Register(0x0110), 1);
    for (uint32_t size : {1u, 2u, 3u})
        EXPECT_NE(Hal().ResetSwitch(0, &flag, size), 0) << size;
    ASSERT_EQ(Hal().ResetSwitch(0, &none, 4), 0);
    EXPECT_EQ(bench.Register(0x0110), 0);
    ASSERT_EQ(Hal().ResetSwitch(1, nullptr, 0), 0);
    EXPECT_EQ(bench.Register(0x0110, 1), 0);
}

TEST(VswitchHal, SwitchesOfOneLibraryKeepTheirOwnMemory)
{
    HalBench bench;
    bench.BringUp(0);
    ObhalPreReset rx = {0, 1};
    ObhalPreReset tx = {1, 2};
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_PRE_RESET, &rx), 0);
    ASSERT_EQ(Hal().VendorSpecificIoctl(1, OBHAL_IOCTL_PRE_RESET, &tx), 0);
    uint32_t flag = 1;
    ASSERT_EQ(Hal().ResetSwitch(1, &flag, 4), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(bench.PortRegister(0, 0x1C, 0) >> 4, 1);
    EXPECT_EQ(bench.PortRegister(4, 0x1C, 1) >> 4, 2);
    EXPECT_EQ(bench.Register(0x0110, 0), 0);
    EXPECT_EQ(bench.Register(0x0110, 1), 1);
}

TEST(VswitchHal, NothingWorksOnMemoryThatInitHasNotSeen)
{
    HalBench bench;
    ObhalPreReset preReset = {0, 1};
    EXPECT_NE(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_PRE_RESET, &preReset), 0);
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(bench.accesses, 0);
    EXPECT_NE(Hal().Init(nullptr), 0);
    for (uint8_t byte : bench.privateData)
        EXPECT_TRUE(byte == 0 || byte == 0xEE);
}

struct SerdesCase {
    uint32_t mode;
    uint32_t speed;
    int expected;  // SERDES_CTRL; -1 = ResetSwitch fails
};

TEST(VswitchHal, InternalPortFollowsTheBoardData)
{
    constexpr SerdesCase kCases[] = {
        {OB_IFACE_SGMII, OB_SPEED_UNKNOWN, 1 << 1}, {OB_IFACE_SGMII, OB_SPEED_AUTONEG, 1 << 1},
        {OB_IFACE_SGMII, OB_SPEED_10M, 2 << 1},     {OB_IFACE_SGMII, OB_SPEED_100M, 3 << 1},
        {OB_IFACE_SGMII, OB_SPEED_1G, 4 << 1},      {OB_IFACE_SGMII, OB_SPEED_2G5, -1},
        {OB_IFACE_HSGMII, OB_SPEED_UNKNOWN, 11},    {OB_IFACE_HSGMII, OB_SPEED_AUTONEG, 11},
        {OB_IFACE_HSGMII, OB_SPEED_2G5, 11},        {OB_IFACE_HSGMII, OB_SPEED_1G, -1},
        {OB_IFACE_HSGMII, OB_SPEED_10G, -1},        {OB_IFACE_RGMII, OB_SPEED_1G, -1},
        {OB_IFACE_UNKNOWN, OB_SPEED_1G, -1},        {99, OB_SPEED_1G, -1},
    };
    for (const SerdesCase& each : kCases) {
        HalBench bench;
        ASSERT_EQ(Hal().Init(bench.privateData + 1), 0);
        bench.device[0].ifaceMode = each.mode;
        bench.device[0].ifaceSpeed = each.speed;
        const int result = Hal().ResetSwitch(0, nullptr, 0);
        EXPECT_EQ(result == 0, each.expected >= 0) << each.mode << " " << each.speed;
        if (each.expected >= 0) {
            EXPECT_EQ(bench.PortRegister(0, 0x1C), each.expected);
        }
    }
}

TEST(VswitchHal, TheStrappedInternalPortMustBeTheBoards)
{
    for (int port : {-1, 1, 4, 7, 8}) {
        HalBench bench;
        ASSERT_EQ(Hal().Init(bench.privateData + 1), 0);
        bench.device[0].internalPort = port;
        EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0) << port;
    }
    HalBench bench;
    ASSERT_EQ(Hal().Init(bench.privateData + 1), 0);
    bench.device[1].internalPort = 0;  // a SerDes port as well
    EXPECT_NE(Hal().ResetSwitch(1, nullptr, 0), 0);
}

TEST(VswitchHal, IoctlRefusesWhatItDoesNotKnow)
{
    HalBench bench;
    bench.BringUp();
    uint8_t param[16] = {};
    for (int cmd : {-1, 0, 1, 2, 4, 5, 6, 7, 9, 15, 19, 1000})
        EXPECT_NE(Hal().VendorSpecificIoctl(0, cmd, param), 0) << cmd;
    for (int cmd : {OBHAL_IOCTL_PRE_RESET, VSWITCH_IOCTL_ADD_STATIC_MAC, VSWITCH_IOCTL_DELETE_MAC})
        EXPECT_NE(Hal().VendorSpecificIoctl(0, cmd, nullptr), 0) << cmd;
    EXPECT_EQ(bench.accesses, 0);
}

TEST(VswitchHal, ReceiveResetMayFollowAnotherOne)
{
    HalBench bench;
    bench.BringUp();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_RX_RESET, nullptr), 0);
    bench.device[0].chip.Write22(3, 2);
    EXPECT_EQ(Hal().VendorSpecificIoctl(0, OBHAL_IOCTL_RX_RESET, nullptr), 0);
    EXPECT_EQ(bench.device[0].chip.Read22(2), 3);
}

TEST(VswitchHal, NoSlotWorksWhileTheChipIsHeldInReset)
{
    HalBench bench;
    bench.BringUp();
    bench.device[0].chip.SetResetLine(true);
    SwitchCaps caps;
    uint8_t mode = 77;
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_NE(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_NE(Hal().DisablePort(0, 1), 0);
    EXPECT_NE(Hal().GetLEDConfig(0, &mode), 0);
    EXPECT_EQ(mode, 77);
    EXPECT_EQ(bench.slept, 0ns);
}

}  // namespace
