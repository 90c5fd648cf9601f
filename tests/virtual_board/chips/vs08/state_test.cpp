// Counters of the chip model, and how it shows itself.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <utility>

#include "tests/virtual_board/chips/vs08/chip_bench.h"

namespace {

using namespace std::chrono_literals;

TEST(VswitchChipCounters, SnapshotAndClear)
{
    ChipBench bench;
    EXPECT_TRUE(bench.chip.AddCounter(2, "etherStatsDropEvents", 0x1122334455667788));
    EXPECT_TRUE(bench.chip.AddCounter(2, "ifOutDiscards", 2));
    EXPECT_TRUE(bench.chip.AddCounter(3, "ifOutDiscards", 1));
    EXPECT_FALSE(bench.chip.AddCounter(8, "ifOutDiscards", 1));
    EXPECT_FALSE(bench.chip.AddCounter(2, "noSuchCounter", 1));
    EXPECT_TRUE(bench.Write(0x0300, 0x12));
    EXPECT_EQ(bench.chip.Read22(5), 0x8012);
    EXPECT_FALSE(bench.Write(0x0310, 0));
    bench.Wait(20us);
    const uint16_t words[] = {0x7788, 0x5566, 0x3344, 0x1122};
    for (uint16_t i = 0; i < 4; ++i)
        EXPECT_EQ(bench.Read(0x0310 + i), words[i]) << i;
    EXPECT_EQ(bench.Read(0x0310 + 4 * 29), 2);
    EXPECT_TRUE(bench.Write(0x0300, 0x22));
    bench.Wait(20us);
    EXPECT_EQ(bench.Read(0x0310), 0x7788) << "the window stays";
    EXPECT_TRUE(bench.Write(0x0300, 0x12));
    bench.Wait(20us);
    EXPECT_EQ(bench.Read(0x0310), 0);
    EXPECT_TRUE(bench.Write(0x0300, 0x13));
    bench.Wait(20us);
    EXPECT_EQ(bench.Read(0x0310 + 4 * 29), 1);
    for (uint16_t refused : {0x02, 0x32, 0x0A, 0x1000 | 0x12})
        EXPECT_FALSE(bench.Write(0x0300, refused)) << refused;
}

TEST(VswitchChipCounters, TheBlockIsRefusedWhileBusy)
{
    ChipBench bench;
    ASSERT_TRUE(bench.Write(0x0300, 0x10));
    auto& chip = bench.chip;
    EXPECT_EQ(chip.Read22(5), 0x8010);
    EXPECT_FALSE(chip.Write22(5, 0x10));
    ASSERT_TRUE(chip.Write22(4, 0x0310));
    EXPECT_FALSE(chip.Read22(5));
    bench.Wait(20us);
    EXPECT_EQ(chip.Read22(5), 0);
}

TEST(VswitchChipCounters, Wrap)
{
    ChipBench bench;
    bench.chip.AddCounter(1, "etherStatsOctets", ~uint64_t{0});
    bench.chip.AddCounter(1, "etherStatsOctets", 3);
    EXPECT_EQ(bench.chip.State()["ports"][1]["counters"]["etherStatsOctets"], 2);
}

TEST(VswitchChipPeek, HasNoSideEffect)
{
    ChipBench bench;
    bench.LinkUp(1);
    for (unsigned i = 0; i < 2049; ++i)
        bench.chip.Learn(Station(i), 1, 1);
    bench.WriteDirect(4, 0x0118);
    EXPECT_EQ(bench.chip.Peek22(6), 1);
    EXPECT_EQ(bench.chip.Peek22(5), 1);
    EXPECT_EQ(bench.chip.Peek22(4), 0x0118);
    EXPECT_EQ(bench.ReadDirect(5), 1);
    EXPECT_EQ(bench.chip.Peek22(5), 0);
    EXPECT_FALSE(bench.chip.Peek22(7));
    bench.WriteDirect(4, 0x0119);
    EXPECT_FALSE(bench.chip.Peek22(5));
}

TEST(VswitchChipState, TellsWhatTheRegistersMean)
{
    ChipBench bench;
    bench.LinkUp(2, 3, false);
    const std::pair<uint16_t, uint16_t> writes[] = {
        {0x0110, 1},          {0x0111, 1}, {0x0112, 0x9100}, {0x0113, 1},      {0x0114, 1500},
        {0x0115, 1},          {0x0116, 4}, {0x0120, 0x3251}, {0x0121, 17},     {0x1203, 100},
        {0x1204, 5},          {0x1205, 1}, {0x1206, 0x8009}, {0x1207, 0x8004}, {0x1208, 300},
        {0x1209, 200},        {0x1211, 1}, {0x1313, 2},      {0x1412, 3},      {0x1718, 1},
        {0x101C, 1 | 5 << 1}, {0x1301, 0}, {0x0401, 77},     {0x0402, 0xFF0},  {0x0403, 0x0211},
        {0x0400, 0x8006},     {0x2008, 5}, {0x200E, 6},
    };
    for (const auto& [address, value] : writes)
        ASSERT_TRUE(bench.Write(address, value)) << address;
    bench.chip.Learn(Station(0x0102), 2, 100);
    const nlohmann::json state = bench.chip.State();
    EXPECT_EQ(state["reset"], "released");
    EXPECT_EQ(state["portIsolation"], true);
    EXPECT_EQ(state["providerBridged"]["enabled"], true);
    EXPECT_EQ(state["providerBridged"]["tpid"], 0x9100);
    EXPECT_EQ(state["ageing"]["seconds"], 15);
    EXPECT_EQ(state["mtu"], 1500);
    EXPECT_EQ(state["snooping"]["igmp"], true);
    EXPECT_EQ(state["snooping"]["mld"], false);
    EXPECT_EQ(state["led"]["shows"], "speed");
    EXPECT_EQ(state["linkChange"], nlohmann::json({2}));
    EXPECT_EQ(state["wred"]["enabled"], true);
    EXPECT_EQ(state["wred"]["weight"], 5);
    EXPECT_EQ(state["wred"]["maxDropPercent"], 50);
    EXPECT_EQ(state["wred"]["green"], nlohmann::json({17, 4095}));
    const auto& port = state["ports"][2];
    EXPECT_EQ(port["vlan"], 100);
    EXPECT_EQ(port["pcp"], 5);
    EXPECT_EQ(port["egressTagging"], true);
    EXPECT_EQ(port["group"], 9);
    EXPECT_EQ(port["mirrorTo"], 4);
    EXPECT_EQ(port["flowControl"]["xoff"], 300);
    EXPECT_EQ(port["flowControl"]["xon"], 200);
    EXPECT_EQ(port["link"], nlohmann::json({{"up", true}, {"speed", 3}, {"fullDuplex", false}}));
    EXPECT_EQ(port["phy"]["eee"], true);
    EXPECT_EQ(port["phy"]["eeeActive"], false);
    EXPECT_TRUE(state["ports"][1]["group"].is_null());
    EXPECT_TRUE(state["ports"][1]["mirrorTo"].is_null());
    EXPECT_EQ(state["ports"][3]["phy"]["dvt"], 2);
    EXPECT_EQ(state["ports"][3]["enabled"], false);
    EXPECT_EQ(state["ports"][4]["phy"]["testMode"], 3);
    EXPECT_EQ(state["ports"][7]["rgmiiDelay"], true);
    EXPECT_EQ(state["ports"][0]["serdes"]["mode"], "HSGMII");
    EXPECT_EQ(state["queues"][1]["green"], nlohmann::json({5, 4095}));
    EXPECT_EQ(state["queues"][1]["reserved"], 6);
    ASSERT_EQ(state["macToVlan"].size(), 1u);
    EXPECT_EQ(state["macToVlan"][0]["vlan"], 77);
    EXPECT_EQ(state["macToVlan"][0]["mac"], "02:11:00:00:00:00");
    ASSERT_EQ(state["fdb"]["entries"].size(), 1u);
    EXPECT_EQ(state["fdb"]["entries"][0]["mac"], "02:00:00:00:01:02");
    bench.chip.SetResetLine(true);
    EXPECT_EQ(bench.chip.State()["reset"], "held");
    bench.chip.SetResetLine(false);
    EXPECT_EQ(bench.chip.State()["reset"], "booting");
}

}  // namespace
