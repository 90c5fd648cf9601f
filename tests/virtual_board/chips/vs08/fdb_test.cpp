// The MAC table of the chip model.
#include <gtest/gtest.h>

#include <set>

#include "tests/virtual_board/chips/vs08/chip_bench.h"

namespace {

using namespace std::chrono_literals;

constexpr uint16_t kGetNext = 1;
constexpr uint16_t kAddStatic = 2;
constexpr uint16_t kDelete = 3;
constexpr uint16_t kFlush = 4;
constexpr uint16_t kFailed = 0x4000;
constexpr uint16_t kBusy = 0x8000;
constexpr std::chrono::nanoseconds kCommandTime = 5us;

// Runs a MAC table command to its end; the result register.
uint16_t RunFdb(ChipBench& bench, uint16_t op)
{
    EXPECT_TRUE(bench.Write(0x0201, op));
    bench.Wait(5us);
    return *bench.Read(0x0201);
}

void SetFdbKey(ChipBench& bench, const vboard::MacAddress& mac, uint16_t vid, uint16_t info)
{
    for (size_t i = 0; i < 3; ++i)
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

TEST_F(VswitchChipFdb, AnEntryAgesAtTheInstantOfItsStep)
{
    ASSERT_TRUE(bench.Write(0x0113, 1));
    auto& chip = bench.chip;
    ASSERT_TRUE(chip.Learn(Station(1), 1, 1));
    chip.Advance(bench.now + 15s - 1ns);
    EXPECT_EQ(chip.Stations().Count(), 1u);
    chip.Advance(bench.now + 15s);
    EXPECT_EQ(chip.Stations().Count(), 0u);
}

TEST_F(VswitchChipFdb, ACommandIsDoneAtTheInstantOfItsTime)
{
    ASSERT_TRUE(bench.Write(0x0201, kGetNext));
    auto& chip = bench.chip;
    chip.Advance(bench.now + kCommandTime - 1ns);
    EXPECT_EQ(*chip.Read22(5) & kBusy, kBusy);
    chip.Advance(bench.now + kCommandTime);
    EXPECT_EQ(*chip.Read22(5) & kBusy, 0);
}

TEST_F(VswitchChipFdb, APortThatLeavesItsVlanLosesItsEntries)
{
    ASSERT_TRUE(bench.chip.Learn(Station(1), 1, 1));
    ASSERT_TRUE(bench.chip.Learn(Station(2), 2, 1));
    ASSERT_TRUE(bench.Write(0x1103, 1));
    EXPECT_EQ(bench.chip.Stations().Count(), 2u) << "nothing has changed";
    ASSERT_TRUE(bench.Write(0x1103, 100));
    EXPECT_EQ(bench.chip.Stations().Count(), 1u);
    EXPECT_EQ(Next(bench, 0)->mac2, 2);
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

}  // namespace
