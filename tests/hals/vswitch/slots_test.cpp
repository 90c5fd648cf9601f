// Each slot against the registers that it is to change or read.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <vector>

#include "tests/hals/vswitch/hal_bench.h"

namespace {

class VswitchHalSlots : public testing::Test {
protected:
    VswitchHalSlots() { bench.BringUp(); }

    HalBench bench;
    vboard::VswitchChip& chip = bench.device[0].chip;
};

TEST_F(VswitchHalSlots, LanPortSetters)
{
    for (int port = 1; port < 8; ++port) {
        ASSERT_EQ(Hal().SetLanPortVlan(0, port, 4094), 0);
        ASSERT_EQ(Hal().SetLanPortPcp(0, port, 7), 0);
        ASSERT_EQ(Hal().SetLanPortEgressTagging(0, port, 1), 0);
        ASSERT_EQ(Hal().SetLanPortGroupId(0, port, 255), 0);
        EXPECT_EQ(bench.PortRegister(port, 3), 4094);
        EXPECT_EQ(bench.PortRegister(port, 4), 7);
        EXPECT_EQ(bench.PortRegister(port, 5), 1);
        EXPECT_EQ(bench.PortRegister(port, 6), 0x80FF);
        ASSERT_EQ(Hal().SetLanPortVlan(0, port, 1), 0);
        ASSERT_EQ(Hal().SetLanPortPcp(0, port, 0), 0);
        ASSERT_EQ(Hal().SetLanPortEgressTagging(0, port, 0), 0);
        ASSERT_EQ(Hal().SetLanPortGroupId(0, port, 0), 0);
        EXPECT_EQ(bench.PortRegister(port, 6), 0x8000) << "group 0 is a group";
        ASSERT_EQ(Hal().SetLanPortGroupId(0, port, 0xFFFFFFFF), 0);
        for (uint16_t offset : {4, 5, 6})
            EXPECT_EQ(bench.PortRegister(port, offset), 0) << offset;
        EXPECT_EQ(bench.PortRegister(port, 3), 1);
    }
}

TEST_F(VswitchHalSlots, ProviderBridgedMode)
{
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0x9100), 0);
    EXPECT_EQ(bench.Register(0x0111), 1);
    EXPECT_EQ(bench.Register(0x0112), 0x9100);
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0xFFFF), 0);
    EXPECT_EQ(bench.Register(0x0112), 0xFFFF);
    ASSERT_EQ(Hal().DisableProviderBridgedMode(0), 0);
    EXPECT_EQ(bench.Register(0x0111), 0);
}

TEST_F(VswitchHalSlots, PortsAreEnabledAndDisabled)
{
    for (int port = 0; port < 8; ++port) {
        ASSERT_EQ(Hal().DisablePort(0, port), 0);
        EXPECT_EQ(bench.PortRegister(port, 1), 0);
        ASSERT_EQ(Hal().EnablePort(0, port), 0);
        EXPECT_EQ(bench.PortRegister(port, 1), 1);
    }
}

TEST_F(VswitchHalSlots, LinkOfAPort)
{
    uint32_t link = 9, speed = 9, duplex = 9;
    ASSERT_EQ(Hal().GetPortLink(0, 5, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 0u);
    EXPECT_EQ(speed, 0u);
    EXPECT_EQ(duplex, 0u);
    ASSERT_TRUE(chip.SetLink(5, true, 3, false));
    ASSERT_EQ(Hal().GetPortLink(0, 5, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 1u);
    EXPECT_EQ(speed, uint32_t{OB_SPEED_100M});
    EXPECT_EQ(duplex, 0u);
    ASSERT_TRUE(chip.SetLink(5, true, 4, true));
    ASSERT_EQ(Hal().GetPortLink(0, 5, nullptr, nullptr, &duplex), 0);
    EXPECT_EQ(duplex, 1u);
    ASSERT_EQ(Hal().GetPortLink(0, 5, nullptr, &speed, nullptr), 0);
    EXPECT_EQ(speed, uint32_t{OB_SPEED_1G});
    EXPECT_EQ(Hal().GetPortLink(0, 5, nullptr, nullptr, nullptr), 0);
}

TEST_F(VswitchHalSlots, ForcedSpeedAndDuplex)
{
    for (uint32_t speed = 1; speed <= 4; ++speed) {
        for (uint32_t duplex : {0u, 1u, 0x80000000u}) {
            ASSERT_EQ(Hal().SetPhyPortSpeedDuplex(0, 6, speed, duplex), 0);
            EXPECT_EQ(bench.PortRegister(6, 0x10), speed | (duplex ? 8u : 0u));
        }
    }
}

TEST_F(VswitchHalSlots, EnergyEfficientEthernet)
{
    uint32_t state = 9;
    ASSERT_EQ(Hal().EnablePhyPortEee(0, 2), 0);
    EXPECT_EQ(bench.PortRegister(2, 0x11), 1);
    ASSERT_EQ(Hal().GetEeePortState(0, 2, &state), 0);
    EXPECT_EQ(state, 1u);
    ASSERT_TRUE(chip.SetLink(2, true, 4, true));
    ASSERT_EQ(Hal().GetEeePortState(0, 2, &state), 0);
    EXPECT_EQ(state, 1u) << "enabled, whether active or not";
    ASSERT_EQ(Hal().EnablePhyPortEee(0, 2), 0) << "while active";
    ASSERT_EQ(Hal().DisablePhyPortEee(0, 2), 0);
    EXPECT_EQ(bench.PortRegister(2, 0x11), 0);
    ASSERT_EQ(Hal().GetEeePortState(0, 2, &state), 0);
    EXPECT_EQ(state, 0u);
    state = 9;
    ASSERT_EQ(Hal().GetEeePortState(0, 7, &state), 0);
    EXPECT_EQ(state, 0u) << "a port without a PHY";
}

TEST_F(VswitchHalSlots, RgmiiDelay)
{
    ASSERT_EQ(Hal().EnableRgmiiDelay(0, 7), 0);
    EXPECT_EQ(bench.PortRegister(7, 0x18), 1);
    ASSERT_EQ(Hal().DisableRgmiiDelay(0, 7), 0);
    EXPECT_EQ(bench.PortRegister(7, 0x18), 0);
}

TEST_F(VswitchHalSlots, Mirroring)
{
    ASSERT_EQ(Hal().SetPortMirror(0, 0, 7), 0);
    EXPECT_EQ(bench.PortRegister(0, 7), 0x8007);
    ASSERT_EQ(Hal().SetPortMirror(0, 0, 255), 0);
    EXPECT_EQ(bench.PortRegister(0, 7), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 5, 0), 0);
    EXPECT_EQ(bench.PortRegister(5, 7), 0x8000);
}

TEST_F(VswitchHalSlots, SwitchWideFeatures)
{
    ASSERT_EQ(Hal().EnableIgmpSnooping(0), 0);
    EXPECT_EQ(bench.Register(0x0115), 3);
    ASSERT_EQ(Hal().DisableIgmpSnooping(0), 0);
    EXPECT_EQ(bench.Register(0x0115), 0);
    for (int step = 1; step <= 5; ++step) {
        ASSERT_EQ(Hal().SetMacAging(0, step), 0);
        EXPECT_EQ(bench.Register(0x0113), step);
    }
    for (int mtu : {64, 1500, 10240}) {
        ASSERT_EQ(Hal().SetMtuSize(0, mtu), 0);
        EXPECT_EQ(bench.Register(0x0114), mtu);
    }
    for (int mode = 0; mode <= 7; ++mode) {
        uint8_t read = 99;
        ASSERT_EQ(Hal().SetLEDConfig(0, mode), 0);
        ASSERT_EQ(Hal().GetLEDConfig(0, &read), 0);
        EXPECT_EQ(read, mode);
        EXPECT_EQ(bench.Register(0x0116), mode);
    }
}

TEST_F(VswitchHalSlots, TestModes)
{
    for (int test = 4; test >= 0; --test) {
        uint8_t modes[2] = {99, 99};
        ASSERT_EQ(Hal().SetPhyPortDvt(0, 3, test), 0);
        EXPECT_EQ(bench.PortRegister(3, 0x13), test);
        ASSERT_EQ(Hal().SetPortTestMode(0, 4, test), 0);
        EXPECT_EQ(bench.PortRegister(4, 0x12), test);
        ASSERT_EQ(Hal().GetPortTestMode(0, 4, modes), 0);
        EXPECT_EQ(modes[0], test);
        EXPECT_EQ(modes[1], 99) << "one byte";
    }
}

TEST_F(VswitchHalSlots, QueuesAndFlowControl)
{
    ASSERT_EQ(Hal().SetQWred(0, 63, 1, 2, 3, 4, 5, 4095), 0);
    const int queue[] = {1, 2, 3, 4, 5, 4095};
    for (uint16_t i = 0; i < 6; ++i)
        EXPECT_EQ(bench.Register(0x2000 + 8 * 63 + i), queue[i]) << i;
    ASSERT_EQ(Hal().SetQRsrv(0, 62, 63), 0);
    EXPECT_EQ(bench.Register(0x2000 + 8 * 62 + 6), 63);
    ASSERT_EQ(Hal().SetGlobWred(0, 1, 9, 75, 10, 11, 12, 13, 14, 15), 0);
    EXPECT_EQ(bench.Register(0x0120), 75 << 8 | 9 << 4 | 1);
    for (uint16_t i = 0; i < 6; ++i)
        EXPECT_EQ(bench.Register(0x0121 + i), 10 + i) << i;
    ASSERT_EQ(Hal().SetGlobWred(0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(bench.Register(0x0120), 0);
    ASSERT_EQ(Hal().SetPortFc(0, 7, 400, 399), 0);
    EXPECT_EQ(bench.PortRegister(7, 8), 400);
    EXPECT_EQ(bench.PortRegister(7, 9), 399);
    ASSERT_EQ(Hal().SetPortFc(0, 7, 0, 0), 0);
    EXPECT_EQ(bench.PortRegister(7, 8), 0);
}

TEST_F(VswitchHalSlots, CountersInTheOrderOfTheirNames)
{
    for (size_t i = 0; i < vboard::vswitch::kCounters; ++i)
        ASSERT_TRUE(
            chip.AddCounter(3, vboard::vswitch::kCounterNames[i], uint64_t{i + 1} << 40 | i));
    uint64_t values[32];
    values[30] = 0x5A5A;
    ASSERT_EQ(Hal().GetPortCounters(0, 3, values), 0);
    for (uint64_t i = 0; i < 30; ++i)
        EXPECT_EQ(values[i], (i + 1) << 40 | i) << i;
    EXPECT_EQ(values[30], 0x5A5Au);
    VswitchPortCounters counters;
    ASSERT_EQ(Hal().GetPortCounters(0, 3, &counters), 0);
    EXPECT_EQ(counters.etherStatsDropEvents, 1ull << 40);
    EXPECT_EQ(counters.etherStatsPkts64Octets, 12ull << 40 | 11);
    EXPECT_EQ(counters.aFramesTransmittedOK, 19ull << 40 | 18);
    EXPECT_EQ(counters.aFramesReceivedOK, 23ull << 40 | 22);
    EXPECT_EQ(counters.dot1dTpPortInDiscards, 27ull << 40 | 26);
    EXPECT_EQ(counters.ifOutDiscards, 30ull << 40 | 29);
    ASSERT_TRUE(chip.AddCounter(4, "etherStatsPkts", 1));
    ASSERT_EQ(Hal().ResetPortCounters(0, 3), 0);
    ASSERT_EQ(Hal().GetPortCounters(0, 3, &counters), 0);
    EXPECT_EQ(counters.ifOutDiscards, 0u);
    ASSERT_EQ(Hal().GetPortCounters(0, 4, &counters), 0);
    EXPECT_EQ(counters.etherStatsPkts, 1u);
}

TEST_F(VswitchHalSlots, RawRegisters)
{
    uint16_t words[2] = {9, 9};
    ASSERT_EQ(Hal().ReadPortReg(0, 7, 0, words), 0);
    EXPECT_EQ(words[0], 4);
    EXPECT_EQ(words[1], 9) << "one word";
    ASSERT_EQ(Hal().WritePortReg(0, 2, 3, 77), 0);
    EXPECT_EQ(bench.PortRegister(2, 3), 77);
    ASSERT_EQ(Hal().SmiRead(0, 0, words), 0);
    EXPECT_EQ(words[0], 0x5608);
    ASSERT_EQ(Hal().SmiWrite(0, 0x0114, 1600), 0);
    EXPECT_EQ(bench.Register(0x0114), 1600);
    ASSERT_EQ(Hal().SmiRead(0, 0x0114, words), 0);
    EXPECT_EQ(words[0], 1600);
    ASSERT_EQ(Hal().SmiWrite(0, 4, 0x1234), 0);
    EXPECT_EQ(chip.Read22(4), 0x1234);
}

TEST_F(VswitchHalSlots, MachineStateIsPrinted)
{
    ASSERT_TRUE(chip.SetLink(2, true, 3, true));
    ASSERT_EQ(Hal().SetLanPortVlan(0, 2, 123), 0);
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 2, 9), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 2, 3), 0);
    testing::internal::CaptureStdout();
    const int result = Hal().PrintMachineState(0);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(result, 0);
    EXPECT_NE(text.find("switch 0: chip 0x5608 revision 0x0010, ready"), std::string::npos) << text;
    EXPECT_NE(text.find("  port 2: enabled, link up 100M full, vlan 123, pcp 0, untagged, group 9, "
                        "mirrored to port 3\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("  port 7: enabled, link down"), std::string::npos) << text;
}

struct BadCall {
    const char* what;
    std::function<int()> call;
};

void ExpectRefused(HalBench& bench, const std::vector<BadCall>& calls)
{
    const nlohmann::json before = bench.device[0].chip.State();
    for (const BadCall& each : calls)
        EXPECT_NE(each.call(), 0) << each.what;
    EXPECT_EQ(bench.device[0].chip.State(), before);
}

TEST_F(VswitchHalSlots, BadPortsAreRefused)
{
    uint32_t word = 0;
    VswitchPortCounters counters;
    std::vector<BadCall> calls;
    for (int port : {-1, 8, 256, 257}) {
        calls.push_back(
            {"GetPortCounters", [&, port] { return Hal().GetPortCounters(0, port, &counters); }});
        calls.push_back({"ResetPortCounters", [port] { return Hal().ResetPortCounters(0, port); }});
        calls.push_back(
            {"GetPortLink", [&, port] { return Hal().GetPortLink(0, port, &word, &word, &word); }});
        calls.push_back({"EnablePort", [port] { return Hal().EnablePort(0, port); }});
        calls.push_back({"DisablePort", [port] { return Hal().DisablePort(0, port); }});
        calls.push_back({"mirror source", [port] { return Hal().SetPortMirror(0, port, 1); }});
        calls.push_back({"mirror target", [port] { return Hal().SetPortMirror(0, 1, port); }});
        calls.push_back(
            {"GetEeePortState", [&, port] { return Hal().GetEeePortState(0, port, &word); }});
        calls.push_back({"SetPortFc", [port] { return Hal().SetPortFc(0, port, 9, 9); }});
        calls.push_back(
            {"ReadPortReg", [&, port] { return Hal().ReadPortReg(0, port, 0, &word); }});
        calls.push_back({"WritePortReg", [port] { return Hal().WritePortReg(0, port, 1, 0); }});
    }
    const uint8_t mac[6] = {2};
    for (int port : {-1, 0, 8, 257}) {  // LAN ports start at 1
        calls.push_back({"SetLanPortVlan", [port] { return Hal().SetLanPortVlan(0, port, 5); }});
        calls.push_back({"SetLanPortPcp", [port] { return Hal().SetLanPortPcp(0, port, 5); }});
        calls.push_back({"tagging", [port] { return Hal().SetLanPortEgressTagging(0, port, 1); }});
        calls.push_back({"group", [port] { return Hal().SetLanPortGroupId(0, port, 5); }});
        calls.push_back({"MAC to VLAN",
                         [=, &mac] { return Hal().MapSetMacToVlan(0, port, mac, 0xFFF, 5, 1); }});
    }
    for (int port : {-1, 0, 7, 8, 257}) {  // without a PHY
        calls.push_back({"speed", [port] { return Hal().SetPhyPortSpeedDuplex(0, port, 2, 1); }});
        calls.push_back({"EEE on", [port] { return Hal().EnablePhyPortEee(0, port); }});
        calls.push_back({"EEE off", [port] { return Hal().DisablePhyPortEee(0, port); }});
        calls.push_back({"DVT", [port] { return Hal().SetPhyPortDvt(0, port, 1); }});
        calls.push_back({"get test", [&, port] { return Hal().GetPortTestMode(0, port, &word); }});
        calls.push_back({"set test", [port] { return Hal().SetPortTestMode(0, port, 1); }});
    }
    for (int port : {-1, 0, 1, 6, 8}) {  // not RGMII
        calls.push_back({"delay on", [port] { return Hal().EnableRgmiiDelay(0, port); }});
        calls.push_back({"delay off", [port] { return Hal().DisableRgmiiDelay(0, port); }});
    }
    ExpectRefused(bench, calls);
}

TEST_F(VswitchHalSlots, BadValuesAreRefused)
{
    const uint8_t mac[6] = {2};
    uint16_t word = 0;
    const std::vector<BadCall> calls = {
        {"VLAN 0", [] { return Hal().SetLanPortVlan(0, 1, 0); }},
        {"VLAN 4095", [] { return Hal().SetLanPortVlan(0, 1, 4095); }},
        {"VLAN 65537", [] { return Hal().SetLanPortVlan(0, 1, 65537); }},
        {"PCP 8", [] { return Hal().SetLanPortPcp(0, 1, 8); }},
        {"PCP -1", [] { return Hal().SetLanPortPcp(0, 1, -1); }},
        {"tagging 2", [] { return Hal().SetLanPortEgressTagging(0, 1, 2); }},
        {"group 256", [] { return Hal().SetLanPortGroupId(0, 1, 256); }},
        {"group -2", [] { return Hal().SetLanPortGroupId(0, 1, 0xFFFFFFFE); }},
        {"TPID 0x5FF", [] { return Hal().EnableProviderBridgedMode(0, 0x5FF); }},
        {"TPID 0x10000", [] { return Hal().EnableProviderBridgedMode(0, 0x10000); }},
        {"mapping VLAN 0", [&] { return Hal().MapSetMacToVlan(0, 1, mac, 0xFFF, 0, 1); }},
        {"mapping VLAN 4095", [&] { return Hal().MapSetMacToVlan(0, 1, mac, 0xFFF, 4095, 1); }},
        {"mapping without MAC", [] { return Hal().MapSetMacToVlan(0, 1, nullptr, 0, 5, 1); }},
        {"speed 0", [] { return Hal().SetPhyPortSpeedDuplex(0, 1, 0, 1); }},
        {"speed 5", [] { return Hal().SetPhyPortSpeedDuplex(0, 1, 5, 1); }},
        {"speed 2^16+2", [] { return Hal().SetPhyPortSpeedDuplex(0, 1, 0x10002, 1); }},
        {"mirror to itself", [] { return Hal().SetPortMirror(0, 1, 1); }},
        {"mirror to 254", [] { return Hal().SetPortMirror(0, 1, 254); }},
        {"ageing 0", [] { return Hal().SetMacAging(0, 0); }},
        {"ageing 6", [] { return Hal().SetMacAging(0, 6); }},
        {"MTU 63", [] { return Hal().SetMtuSize(0, 63); }},
        {"MTU 10241", [] { return Hal().SetMtuSize(0, 10241); }},
        {"LED 8", [] { return Hal().SetLEDConfig(0, 8); }},
        {"LED out", [] { return Hal().GetLEDConfig(0, nullptr); }},
        {"DVT 5", [] { return Hal().SetPhyPortDvt(0, 1, 5); }},
        {"DVT -1", [] { return Hal().SetPhyPortDvt(0, 1, -1); }},
        {"test 5", [] { return Hal().SetPortTestMode(0, 1, 5); }},
        {"test out", [] { return Hal().GetPortTestMode(0, 1, nullptr); }},
        {"EEE out", [] { return Hal().GetEeePortState(0, 1, nullptr); }},
        {"counters out", [] { return Hal().GetPortCounters(0, 1, nullptr); }},
        {"walk without callback", [] { return Hal().ForEachMacEntry(0, nullptr, nullptr); }},
        {"queue 64", [] { return Hal().SetQWred(0, 64, 1, 2, 3, 4, 5, 6); }},
        {"queue -1", [] { return Hal().SetQWred(0, -1, 1, 2, 3, 4, 5, 6); }},
        {"threshold 4096", [] { return Hal().SetQWred(0, 1, 1, 2, 3, 4, 5, 4096); }},
        {"threshold -1", [] { return Hal().SetQWred(0, 1, -1, 2, 3, 4, 5, 6); }},
        {"minimum above", [] { return Hal().SetQWred(0, 1, 1, 2, 3, 4, 7, 6); }},
        {"on 2", [] { return Hal().SetGlobWred(0, 2, 0, 0, 0, 0, 0, 0, 0, 0); }},
        {"weight 16", [] { return Hal().SetGlobWred(0, 1, 16, 0, 0, 0, 0, 0, 0, 0); }},
        {"percent 101", [] { return Hal().SetGlobWred(0, 1, 0, 101, 0, 0, 0, 0, 0, 0); }},
        {"global above", [] { return Hal().SetGlobWred(0, 1, 0, 0, 2, 1, 0, 0, 0, 0); }},
        {"reserve 64", [] { return Hal().SetQRsrv(0, 1, 64); }},
        {"reserve queue", [] { return Hal().SetQRsrv(0, 64, 1); }},
        {"XOFF 4096", [] { return Hal().SetPortFc(0, 1, 4096, 1); }},
        {"XON above", [] { return Hal().SetPortFc(0, 1, 5, 6); }},
        {"port register 256", [&] { return Hal().ReadPortReg(0, 1, 256, &word); }},
        {"port register -1", [] { return Hal().WritePortReg(0, 1, -1, 0); }},
        {"unknown port register", [&] { return Hal().ReadPortReg(0, 1, 0x50, &word); }},
        {"read-only register", [] { return Hal().WritePortReg(0, 1, 2, 0); }},
        {"port value", [] { return Hal().WritePortReg(0, 1, 3, 0x10001); }},
        {"port out", [] { return Hal().ReadPortReg(0, 1, 3, nullptr); }},
        {"SMI 0x20", [&] { return Hal().SmiRead(0, 0x20, &word); }},
        {"SMI 0xFF", [] { return Hal().SmiWrite(0, 0xFF, 0); }},
        {"SMI -1", [&] { return Hal().SmiRead(0, -1, &word); }},
        {"SMI 0x10114", [&] { return Hal().SmiRead(0, 0x10114, &word); }},
        {"SMI value", [] { return Hal().SmiWrite(0, 0x114, 0x10100); }},
        {"SMI out", [] { return Hal().SmiRead(0, 0x114, nullptr); }},
        {"reserved bit", [] { return Hal().SmiWrite(0, 0x110, 2); }},
    };
    ExpectRefused(bench, calls);
}

}  // namespace
