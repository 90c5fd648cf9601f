// What the chip model does beyond keeping registers.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "tests/vswitch/chip_bench.h"

namespace {

using namespace std::chrono_literals;

constexpr uint16_t PortReg(unsigned port, uint16_t offset)
{
    return static_cast<uint16_t>(0x1000 + 0x100 * port + offset);
}

constexpr uint16_t LinkStatus(unsigned speed, bool full)
{
    return static_cast<uint16_t>(1 | (full ? 2 : 0) | speed << 2);
}

TEST(VswitchChipPorts, KindsFollowFromTheInternalPort)
{
    EXPECT_THROW(vboard::VswitchChip(8), std::invalid_argument);
    ChipBench bench(7);
    EXPECT_EQ(bench.Read(0x0100), 0x0786);
    EXPECT_EQ(bench.Read(PortReg(7, 0)), 0x0016);
    EXPECT_EQ(bench.Read(PortReg(0, 0)), 0x0006);
    EXPECT_EQ(bench.Read(PortReg(4, 0)), 0x000B);
    ChipBench middle(4);
    EXPECT_EQ(middle.Read(PortReg(4, 0)), 0x0016);
    EXPECT_EQ(middle.Read(PortReg(0, 0)), 0x0006);
    EXPECT_EQ(middle.Read(PortReg(7, 0)), 0x0004);
    EXPECT_FALSE(middle.Read(PortReg(4, 0x10)));
    EXPECT_EQ(middle.Read(PortReg(4, 0x1C)), 2);
}

TEST(VswitchChipPorts, PartnersHaveTheSpeedsOfTheirPort)
{
    ChipBench bench;
    EXPECT_TRUE(bench.chip.SetLink(1, true, 4, true));
    EXPECT_FALSE(bench.chip.SetLink(1, true, 5, true));
    EXPECT_FALSE(bench.chip.SetLink(1, true, 0, true));
    EXPECT_TRUE(bench.chip.SetLink(0, true, 5, true));
    EXPECT_FALSE(bench.chip.SetLink(0, true, 6, true));
    EXPECT_FALSE(bench.chip.SetLink(7, true, 5, true));
    EXPECT_FALSE(bench.chip.SetLink(8, true, 4, true));
    EXPECT_TRUE(bench.chip.SetLink(7, true, 1, true));
    EXPECT_EQ(bench.Read(PortReg(7, 2)), LinkStatus(4, true));
    EXPECT_TRUE(bench.chip.SetLink(7, false, 99, true));
    EXPECT_EQ(bench.Read(PortReg(7, 2)), 0);
}

TEST(VswitchChipPorts, AutonegotiationResolvesAndForcingOverrides)
{
    ChipBench bench;
    bench.LinkUp(2, 3, false);
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(3, false));
    EXPECT_TRUE(bench.Write(PortReg(2, 0x10), 2 | 8));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(2, true));
    EXPECT_TRUE(bench.Write(PortReg(2, 0x10), 4));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(4, false));
    EXPECT_TRUE(bench.Write(PortReg(2, 0x10), 1));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(3, false));
    for (uint16_t refused : {0, 5, 6, 7, 8})
        EXPECT_FALSE(bench.Write(PortReg(2, 0x10), refused)) << refused;
}

TEST(VswitchChipPorts, LinkNeedsEnablePartnerAndNoTestMode)
{
    ChipBench bench;
    bench.LinkUp(2);
    EXPECT_TRUE(bench.Write(PortReg(2, 1), 0));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), 0);
    EXPECT_TRUE(bench.Write(PortReg(2, 1), 1));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(4, true));
    EXPECT_TRUE(bench.Write(PortReg(2, 0x12), 1));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), 0);
    EXPECT_TRUE(bench.Write(PortReg(2, 0x12), 0));
    EXPECT_TRUE(bench.Write(PortReg(2, 0x13), 4));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(4, true));
}

TEST(VswitchChipPorts, SerdesSpeedsFollowModeAndPartner)
{
    ChipBench bench;
    bench.LinkUp(0, 5);
    EXPECT_EQ(bench.Read(PortReg(0, 2)), LinkStatus(4, true));
    EXPECT_TRUE(bench.Write(PortReg(0, 0x1C), 1 | 5 << 1));
    EXPECT_EQ(bench.Read(PortReg(0, 2)), LinkStatus(5, true));
    EXPECT_TRUE(bench.Write(PortReg(0, 0x1C), 3 << 1 | 0x30));
    EXPECT_EQ(bench.Read(PortReg(0, 2)), LinkStatus(3, true));
    EXPECT_TRUE(bench.Write(PortReg(0, 0x1C), 1 << 1));
    bench.LinkUp(0, 2, false);
    EXPECT_EQ(bench.Read(PortReg(0, 2)), LinkStatus(2, false));
    for (uint16_t refused : {0, 5 << 1, 6 << 1, 1, 1 | 4 << 1, 1 | 6 << 1})
        EXPECT_FALSE(bench.Write(PortReg(0, 0x1C), refused)) << refused;
}

TEST(VswitchChipPorts, LinkChangesAreLatchedAndClearedByWritingOnes)
{
    ChipBench bench;
    bench.LinkUp(1);
    bench.LinkUp(5);
    bench.LinkUp(5);
    EXPECT_EQ(bench.Read(0x0117), 0x22);
    EXPECT_EQ(bench.Read(0x0117), 0x22);
    EXPECT_TRUE(bench.Write(0x0117, 0x02));
    EXPECT_EQ(bench.Read(0x0117), 0x20);
    EXPECT_TRUE(bench.Write(PortReg(1, 1), 0));
    EXPECT_EQ(bench.Read(0x0117), 0x22);
}

TEST(VswitchChipPorts, LinksThatStandAcrossAResetAreNoChange)
{
    ChipBench bench;
    bench.LinkUp(1);
    bench.chip.SetResetLine(true);
    bench.LinkUp(2);
    bench.chip.SetResetLine(false);
    bench.Wait(ChipBench::kBoot);
    EXPECT_EQ(bench.Read(0x0117), 0);
    EXPECT_EQ(bench.Read(PortReg(1, 2)), LinkStatus(4, true));
    EXPECT_EQ(bench.Read(PortReg(2, 2)), LinkStatus(4, true));
}

TEST(VswitchChipPorts, EeeIsActiveOnAFastFullDuplexLinkOnly)
{
    ChipBench bench;
    EXPECT_TRUE(bench.Write(PortReg(3, 0x11), 1));
    EXPECT_EQ(bench.Read(PortReg(3, 0x11)), 1);
    bench.LinkUp(3, 3, true);
    EXPECT_EQ(bench.Read(PortReg(3, 0x11)), 3);
    EXPECT_FALSE(bench.Write(PortReg(3, 0x11), 3));
    bench.LinkUp(3, 3, false);
    EXPECT_EQ(bench.Read(PortReg(3, 0x11)), 1);
    bench.LinkUp(3, 2, true);
    EXPECT_EQ(bench.Read(PortReg(3, 0x11)), 1);
    bench.LinkUp(3, 4, true);
    EXPECT_TRUE(bench.Write(PortReg(3, 0x11), 0));
    EXPECT_EQ(bench.Read(PortReg(3, 0x11)), 0);
}

TEST(VswitchChipPorts, GroupAndMirrorFieldsNeedTheirEnable)
{
    ChipBench bench;
    EXPECT_FALSE(bench.Write(PortReg(2, 6), 5));
    EXPECT_TRUE(bench.Write(PortReg(2, 6), 0x80FF));
    EXPECT_TRUE(bench.Write(PortReg(2, 6), 0x8000));
    EXPECT_TRUE(bench.Write(PortReg(2, 6), 0));
    EXPECT_FALSE(bench.Write(PortReg(2, 7), 3));
    EXPECT_FALSE(bench.Write(PortReg(2, 7), 0x8002));
    EXPECT_TRUE(bench.Write(PortReg(2, 7), 0x8003));
    EXPECT_EQ(bench.Read(PortReg(2, 7)), 0x8003);
    EXPECT_TRUE(bench.Write(PortReg(2, 7), 0));
}

TEST(VswitchChipMacVlan, AValidEntryIsLocked)
{
    ChipBench bench;
    const uint16_t entry = 0x0400 + 8 * 31;
    EXPECT_FALSE(bench.Write(entry, 0x8003)) << "no VLAN id yet";
    EXPECT_TRUE(bench.Write(entry + 1, 100));
    EXPECT_FALSE(bench.Write(entry, 0x8000)) << "the internal port";
    EXPECT_TRUE(bench.Write(entry, 0x8003));
    for (uint16_t offset = 1; offset <= 5; ++offset)
        EXPECT_FALSE(bench.Write(entry + offset, 7)) << offset;
    EXPECT_EQ(bench.Read(entry + 1), 100);
    EXPECT_TRUE(bench.Write(entry, 3));
    for (uint16_t offset = 1; offset <= 5; ++offset)
        EXPECT_TRUE(bench.Write(entry + offset, 7)) << offset;
}

constexpr uint16_t kGetNext = 1;
constexpr uint16_t kAddStatic = 2;
constexpr uint16_t kDelete = 3;
constexpr uint16_t kFlush = 4;
constexpr uint16_t kFailed = 0x4000;
constexpr uint16_t kBusy = 0x8000;

// Runs a MAC table command to its end; the result register.
uint16_t RunFdb(ChipBench& bench, uint16_t op)
{
    EXPECT_TRUE(bench.Write(0x0201, op));
    bench.Wait(5us);
    return *bench.Read(0x0201);
}

void SetFdbKey(ChipBench& bench, const vboard::MacAddress& mac, uint16_t vid, uint16_t info)
{
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_TRUE(bench.Write(static_cast<uint16_t>(0x0202 + i),
                                static_cast<uint16_t>(mac[2 * i] << 8 | mac[2 * i + 1])));
    EXPECT_TRUE(bench.Write(0x0205, vid));
    EXPECT_TRUE(bench.Write(0x0206, info));
}

struct WalkEntry {
    uint16_t slot, mac2, vid, info, age;
    bool operator==(const WalkEntry&) const = default;
};

std::optional<WalkEntry> Next(ChipBench& bench, uint16_t from)
{
    EXPECT_TRUE(bench.Write(0x0200, from));
    if (RunFdb(bench, kGetNext) & kFailed)
        return std::nullopt;
    return WalkEntry{*bench.Read(0x0200), *bench.Read(0x0204), *bench.Read(0x0205),
                     *bench.Read(0x0206), *bench.Read(0x0207)};
}

class VswitchChipFdb : public testing::Test {
protected:
    VswitchChipFdb()
    {
        for (unsigned port = 0; port < 8; ++port)
            bench.LinkUp(port);
    }
    ChipBench bench;
};

TEST_F(VswitchChipFdb, WalkGivesEntriesInSlotOrderWithAge)
{
    ASSERT_TRUE(bench.chip.Learn(Station(0x0304), 3, 100));
    bench.Wait(7s);
    ASSERT_TRUE(bench.chip.Learn(Station(0x0506), 5, 200));
    EXPECT_EQ(bench.Read(0x0208), 2);
    EXPECT_EQ(Next(bench, 0), (WalkEntry{0, 0x0304, 100, 3, 7}));
    EXPECT_EQ(Next(bench, 1), (WalkEntry{1, 0x0506, 200, 5, 0}));
    EXPECT_FALSE(Next(bench, 2));
    EXPECT_EQ(bench.Read(0x0204), 0x0506) << "a failed search leaves the registers";
}

TEST_F(VswitchChipFdb, AddressAndVlanTogetherAreTheEntry)
{
    ASSERT_TRUE(bench.chip.Learn(Station(1), 3, 100));
    ASSERT_TRUE(bench.chip.Learn(Station(1), 4, 200));
    ASSERT_TRUE(bench.chip.Learn(Station(1), 5, 100));
    EXPECT_EQ(bench.Read(0x0208), 2);
    EXPECT_EQ(Next(bench, 0)->info, 5) << "moved to the port it was seen on last";
    EXPECT_EQ(Next(bench, 1)->info, 4);
}

TEST_F(VswitchChipFdb, LearnsOnlyWhatAPortCouldReceive)
{
    EXPECT_FALSE(bench.chip.Learn(Station(1), 8, 1));
    EXPECT_FALSE(bench.chip.Learn(Station(1), 1, 0));
    EXPECT_FALSE(bench.chip.Learn(Station(1), 1, 4095));
    EXPECT_TRUE(bench.chip.Learn(Station(1), 1, 4094));
    EXPECT_FALSE(bench.chip.Learn({1, 0, 0x5E, 0, 0, 1}, 1, 1));
    EXPECT_FALSE(bench.chip.Learn({}, 1, 1));
    bench.Write(PortReg(2, 1), 0);
    EXPECT_FALSE(bench.chip.Learn(Station(2), 2, 1));
    bench.Write(PortReg(3, 0x13), 2);
    EXPECT_FALSE(bench.chip.Learn(Station(3), 3, 1));
    bench.WriteDirect(3, 2);
    EXPECT_FALSE(bench.chip.Learn(Station(4), 0, 1)) << "receive path in reset";
    EXPECT_TRUE(bench.chip.Learn(Station(4), 4, 1));
    bench.chip.SetResetLine(true);
    EXPECT_FALSE(bench.chip.Learn(Station(5), 5, 1));
    EXPECT_FALSE(bench.chip.Forget());
    EXPECT_FALSE(bench.chip.AddCounter(1, "etherStatsPkts", 1));
}

TEST_F(VswitchChipFdb, FullTableRefusesAndCounts)
{
    for (unsigned i = 0; i < 2048; ++i)
        ASSERT_TRUE(bench.chip.Learn(Station(i), 1 + i % 6, 1 + i % 4)) << i;
    EXPECT_FALSE(bench.chip.Learn(Station(5000), 1, 1));
    EXPECT_FALSE(bench.chip.Learn(Station(5001), 1, 1));
    EXPECT_TRUE(bench.chip.Learn(Station(77), 2, 1 + 77 % 4)) << "already there";
    EXPECT_EQ(bench.Read(0x0118), 2);
    EXPECT_EQ(bench.Read(0x0118), 0) << "cleared by reading";
    for (unsigned i = 0; i < 0x10005; ++i)
        bench.chip.Learn(Station(5000), 1, 1);
    EXPECT_EQ(bench.Read(0x0118), 0xFFFF);
    std::set<uint16_t> seen;
    uint16_t slot = 0;
    for (; slot < 2048; ++slot) {
        const auto entry = Next(bench, slot);
        ASSERT_TRUE(entry);
        ASSERT_EQ(entry->slot, slot);
        ASSERT_EQ(entry->mac2, slot);
        seen.insert(entry->mac2);
    }
    EXPECT_EQ(seen.size(), 2048u);
}

TEST_F(VswitchChipFdb, FreedSlotsAreTakenLowestFirst)
{
    for (unsigned i = 0; i < 10; ++i)
        ASSERT_TRUE(bench.chip.Learn(Station(i), 1, 1));
    for (unsigned i : {7u, 2u}) {
        SetFdbKey(bench, Station(i), 1, 0);
        EXPECT_EQ(RunFdb(bench, kDelete), kDelete);
    }
    EXPECT_EQ(Next(bench, 2)->slot, 3);
    ASSERT_TRUE(bench.chip.Learn(Station(100), 1, 1));
    ASSERT_TRUE(bench.chip.Learn(Station(101), 1, 1));
    ASSERT_TRUE(bench.chip.Learn(Station(102), 1, 1));
    EXPECT_EQ(Next(bench, 2)->mac2, 100);
    EXPECT_EQ(Next(bench, 7)->mac2, 101);
    EXPECT_EQ(Next(bench, 10)->mac2, 102);
}

TEST_F(VswitchChipFdb, AgeingStepsRemoveAtTheirTimes)
{
    constexpr std::chrono::seconds kTimes[] = {15s, 75s, 300s, 1200s, 4800s};
    for (uint16_t step = 1; step <= 5; ++step) {
        ASSERT_TRUE(bench.Write(0x0113, step));
        ASSERT_TRUE(bench.chip.Learn(Station(step), 1, 1));
        const auto learnt = bench.now;
        bench.Wait(kTimes[step - 1] - 100ms);
        EXPECT_EQ(bench.Read(0x0208), 1) << step;
        ASSERT_TRUE(bench.chip.Learn(Station(step), 1, 1)) << "refreshed";
        bench.Wait(learnt + kTimes[step - 1] - bench.now);
        EXPECT_EQ(bench.Read(0x0208), 1) << step;
        bench.Wait(kTimes[step - 1]);
        EXPECT_EQ(bench.Read(0x0208), 0) << step;
    }
}

TEST_F(VswitchChipFdb, EachEntryAgesAtItsOwnTime)
{
    for (unsigned i = 0; i < 4; ++i) {
        ASSERT_TRUE(bench.chip.Learn(Station(i), 1, 1));
        bench.Wait(50s);
    }
    bench.Wait(99s);
    for (uint16_t left = 4; left-- > 0;) {
        bench.Wait(2s);
        EXPECT_EQ(bench.Read(0x0208), left);
        bench.Wait(48s);
        EXPECT_EQ(bench.Read(0x0208), left);
    }
}

TEST_F(VswitchChipFdb, AShorterStepCountsAtOnce)
{
    ASSERT_TRUE(bench.chip.Learn(Station(1), 1, 1));
    bench.Wait(100s);
    ASSERT_TRUE(bench.chip.Learn(Station(2), 1, 1));
    EXPECT_EQ(bench.Read(0x0208), 2);
    ASSERT_TRUE(bench.Write(0x0113, 2));
    EXPECT_EQ(bench.Read(0x0208), 1);
    EXPECT_EQ(Next(bench, 0)->mac2, 2);
}

TEST_F(VswitchChipFdb, StaticEntriesStay)
{
    bench.Wait(60s);
    SetFdbKey(bench, Station(9), 7, 4);
    EXPECT_EQ(RunFdb(bench, kAddStatic), kAddStatic);
    ASSERT_TRUE(bench.chip.Learn(Station(10), 4, 7));
    EXPECT_EQ(bench.Read(0x0209), 1);
    ASSERT_TRUE(bench.chip.Learn(Station(9), 5, 7));
    EXPECT_EQ(Next(bench, 0), (WalkEntry{0, 9, 7, 0x14, 0})) << "not moved";
    EXPECT_EQ(RunFdb(bench, kFlush), kFlush);
    bench.Wait(5000s);
    EXPECT_TRUE(bench.chip.Forget());
    EXPECT_TRUE(bench.chip.SetLink(4, false, 0, false));
    EXPECT_EQ(bench.Read(0x0208), 1);
    SetFdbKey(bench, Station(9), 7, 0);
    EXPECT_EQ(RunFdb(bench, kDelete), kDelete);
    EXPECT_EQ(RunFdb(bench, kDelete), kDelete | kFailed);
    EXPECT_EQ(bench.Read(0x0208), 0);
}

TEST_F(VswitchChipFdb, AddStaticRefusesWhatIsNoEntry)
{
    SetFdbKey(bench, {1, 0, 0, 0, 0, 1}, 7, 4);
    EXPECT_EQ(RunFdb(bench, kAddStatic), kAddStatic | kFailed);
    SetFdbKey(bench, {}, 7, 4);
    EXPECT_EQ(RunFdb(bench, kAddStatic), kAddStatic | kFailed);
    SetFdbKey(bench, Station(1), 0, 4);
    EXPECT_EQ(RunFdb(bench, kAddStatic), kAddStatic | kFailed);
    EXPECT_EQ(bench.Read(0x0208), 0);
    EXPECT_FALSE(bench.Write(0x0201, 0));
    EXPECT_FALSE(bench.Write(0x0201, 5));
}

TEST_F(VswitchChipFdb, LinkDownForgetsThePortsAddresses)
{
    ASSERT_TRUE(bench.chip.Learn(Station(1), 1, 1));
    ASSERT_TRUE(bench.chip.Learn(Station(2), 2, 1));
    bench.Write(PortReg(1, 1), 0);
    EXPECT_EQ(bench.Read(0x0208), 1);
    EXPECT_EQ(Next(bench, 0)->mac2, 2);
    EXPECT_TRUE(bench.chip.SetLink(2, false, 0, false));
    EXPECT_EQ(bench.Read(0x0208), 0);
}

TEST_F(VswitchChipFdb, ABusyTableIsLeftAlone)
{
    bench.chip.Learn(Station(1), 1, 1);
    ASSERT_TRUE(bench.Write(0x0201, kGetNext));
    // Straight at the chip: time stands still.
    auto& chip = bench.chip;
    EXPECT_EQ(chip.Read22(5), kGetNext | kBusy);
    EXPECT_FALSE(chip.Write22(5, kGetNext));
    for (uint16_t address : {0x0200, 0x0202, 0x0203, 0x0204, 0x0205, 0x0206, 0x0207}) {
        ASSERT_TRUE(chip.Write22(4, address));
        EXPECT_FALSE(chip.Read22(5)) << address;
        EXPECT_FALSE(chip.Write22(5, 1)) << address;
    }
    EXPECT_EQ(chip.Complaint(), "command in progress");
    ASSERT_TRUE(chip.Write22(4, 0x0208));
    EXPECT_EQ(chip.Read22(5), 1);
    bench.Wait(5us);
    EXPECT_EQ(bench.Read(0x0201), kGetNext);
    EXPECT_EQ(bench.Read(0x0204), 1);
}

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
