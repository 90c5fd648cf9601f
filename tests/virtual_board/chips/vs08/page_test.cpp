// The chip model against the tables of the register manual.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tests/virtual_board/chips/vs08/chip_bench.h"
#include "tests/virtual_board/chips/vs08/register_page.h"

namespace {

bool IsReadOnly(const PageRegister& reg)
{
    return reg.access == "RO" || reg.access == "RC";
}

uint16_t ResetValue(const PageRegister& reg)
{
    if (reg.reset)
        return *reg.reset;
    if (reg.name == "CAPS")
        return 0x0086;
    if (reg.name == "PORT_STATUS")
        return 0;
    const unsigned port = reg.address >> 8 & 7;
    return port == 0 ? 0x0016 : port == 7 ? 0x0004 : 0x000B;
}

std::string Name(const PageRegister& reg)
{
    char text[64];
    std::snprintf(text, sizeof text, "%s at 0x%04X", reg.name.c_str(), reg.address);
    return text;
}

TEST(RegisterPage, IsReadCompletely)
{
    size_t expected = 6 + 9 + 7;     // global
    expected += 10 + 1 + 4 * 30;     // MAC table and counter access
    expected += 32 * 6 + 64 * 7;     // MAC-to-VLAN entries, queues
    expected += 8 * 10 + 6 * 4 + 2;  // ports
    EXPECT_EQ(RegisterPage().size(), expected);
}

TEST(VswitchChipPage, EveryRegisterHasItsResetValue)
{
    ChipBench bench;
    for (const PageRegister& reg : RegisterPage())
        EXPECT_EQ(bench.Read(reg.address), ResetValue(reg)) << Name(reg);
}

TEST(VswitchChipPage, ReadOnlyRegistersRefuseEveryWrite)
{
    ChipBench bench;
    unsigned seen = 0;
    for (const PageRegister& reg : RegisterPage()) {
        if (!IsReadOnly(reg))
            continue;
        ++seen;
        for (uint16_t value : {uint16_t{0}, uint16_t{1}, uint16_t{0xFFFF}})
            EXPECT_FALSE(bench.Write(reg.address, value)) << Name(reg);
        EXPECT_EQ(bench.Read(reg.address), ResetValue(reg)) << Name(reg);
    }
    EXPECT_EQ(seen, 6u + 1 + 3 + 4 * 30 + 8 * 2);
}

TEST(VswitchChipPage, ReservedBitsRefuseTheWrite)
{
    ChipBench bench;
    for (const PageRegister& reg : RegisterPage()) {
        if (IsReadOnly(reg))
            continue;
        // BUSY and FAILED are only read; the command itself is valid.
        const bool command = reg.access == "CMD";
        const uint16_t bits = command ? reg.bits & 0x3FFF : reg.bits;
        const uint16_t good = command ? (reg.name == "FDB_CMD" ? 4 : 0x20) : ResetValue(reg);
        for (unsigned bit = 0; bit < 16; ++bit) {
            if (bits >> bit & 1)
                continue;
            EXPECT_FALSE(bench.Write(reg.address, static_cast<uint16_t>(good | 1u << bit)))
                << Name(reg) << " bit " << bit;
        }
        EXPECT_EQ(bench.Read(reg.address), ResetValue(reg)) << Name(reg);
        EXPECT_TRUE(bench.Write(reg.address, good)) << Name(reg);
    }
}

TEST(VswitchChipPage, EveryAddressThatThePageDoesNotListIsUnknown)
{
    std::set<unsigned> listed;
    for (const PageRegister& reg : RegisterPage())
        listed.insert(reg.address);
    ChipBench bench;
    for (unsigned address = 0; address <= 0xFFFF; ++address) {
        const bool known = listed.contains(address);
        ASSERT_EQ(bench.Read(static_cast<uint16_t>(address)).has_value(), known) << address;
        if (!known) {
            ASSERT_FALSE(bench.Write(static_cast<uint16_t>(address), 0)) << address;
        }
    }
}

struct RangeCase {
    const char* name;
    uint16_t min;
    uint16_t max;
};

TEST(VswitchChipPage, RangesAreKeptAtBothEnds)
{
    constexpr RangeCase kCases[] = {
        {"PB_TPID", 0x0600, 0xFFFF}, {"AGEING", 1, 5},       {"MTU", 64, 10240},
        {"SNOOPING", 0, 3},          {"LED_MODE", 0, 7},     {"FDB_INDEX", 0, 2047},
        {"FDB_VID", 0, 4094},        {"M2V_VID", 0, 4094},   {"PORT_VID", 1, 4094},
        {"PORT_PCP", 0, 7},          {"PHY_TEST", 0, 4},     {"PHY_DVT", 0, 4},
        {"Q_RED_MAX", 0, 4095},      {"Q_RESERVED", 0, 63},  {"WRED_GREEN_MIN", 0, 4095},
        {"PORT_XOFF", 0, 4095},      {"FORWARD_CTRL", 0, 1}, {"PORT_CTRL", 0, 1},
    };
    ChipBench bench;
    for (const RangeCase& range : kCases) {
        bool found = false;
        for (const PageRegister& reg : RegisterPage()) {
            if (reg.name != range.name)
                continue;
            found = true;
            for (uint16_t good : {range.min, range.max}) {
                EXPECT_TRUE(bench.Write(reg.address, good)) << Name(reg) << " " << good;
                EXPECT_EQ(bench.Read(reg.address), good) << Name(reg);
            }
            if (range.min > 0) {
                EXPECT_FALSE(bench.Write(reg.address, range.min - 1)) << Name(reg);
            }
            if (range.max < 0xFFFF) {
                EXPECT_FALSE(bench.Write(reg.address, range.max + 1)) << Name(reg);
            }
            EXPECT_EQ(bench.Read(reg.address), range.max) << Name(reg);
        }
        EXPECT_TRUE(found) << range.name;
    }
}

TEST(VswitchChipPage, WredControlTakesPercentUpTo100)
{
    ChipBench bench;
    EXPECT_TRUE(bench.Write(0x0120, 100 << 8 | 15 << 4 | 1));
    EXPECT_FALSE(bench.Write(0x0120, 101 << 8 | 15 << 4 | 1));
    EXPECT_EQ(bench.Read(0x0120), 100 << 8 | 15 << 4 | 1);
}

TEST(VswitchChipPage, IdentificationAndCommandRegisters)
{
    ChipBench bench;
    EXPECT_EQ(bench.ReadDirect(0), 0x5608);
    EXPECT_EQ(bench.ReadDirect(1), 0x0010);
    EXPECT_EQ(bench.ReadDirect(2), 3);
    EXPECT_EQ(bench.ReadDirect(3), 0);
    for (uint8_t reg : {0, 1, 2})
        EXPECT_FALSE(bench.WriteDirect(reg, 0)) << int{reg};
    for (uint16_t value : {0, 3, 4, 0x8001})
        EXPECT_FALSE(bench.WriteDirect(3, value)) << value;
    for (uint8_t reg = 7; reg < 32; ++reg) {
        EXPECT_FALSE(bench.ReadDirect(reg)) << int{reg};
        EXPECT_FALSE(bench.WriteDirect(reg, 0)) << int{reg};
    }
}

TEST(VswitchChipPage, DataIncStepsOnlyWhenTheAccessIsDone)
{
    ChipBench bench;
    bench.WriteDirect(4, 0x0113);
    EXPECT_TRUE(bench.WriteDirect(6, 5));
    EXPECT_EQ(bench.ReadDirect(4), 0x0114);
    EXPECT_FALSE(bench.WriteDirect(6, 1));
    EXPECT_EQ(bench.ReadDirect(4), 0x0114);
    EXPECT_EQ(bench.ReadDirect(6), 2000);
    EXPECT_EQ(bench.ReadDirect(4), 0x0115);
    EXPECT_EQ(bench.ReadDirect(5), 0);
    EXPECT_EQ(bench.ReadDirect(4), 0x0115);
    EXPECT_EQ(bench.Read(0x0113), 5);
    bench.WriteDirect(4, 0x0119);
    EXPECT_FALSE(bench.ReadDirect(6));
    EXPECT_EQ(bench.ReadDirect(4), 0x0119);
}

TEST(VswitchChipReset, NothingAnswersWhileTheLineIsHeld)
{
    ChipBench bench;
    bench.chip.SetResetLine(true);
    for (uint8_t reg = 0; reg < 32; ++reg) {
        EXPECT_FALSE(bench.ReadDirect(reg)) << int{reg};
        EXPECT_FALSE(bench.WriteDirect(reg, 1)) << int{reg};
        EXPECT_FALSE(bench.chip.Peek22(reg)) << int{reg};
    }
    EXPECT_EQ(bench.chip.Complaint(), "held in reset");
}

TEST(VswitchChipReset, BootsIn20MillisecondsAfterTheLineIsReleased)
{
    ChipBench bench;
    bench.chip.SetResetLine(true);
    bench.Wait(std::chrono::seconds(1));
    bench.chip.SetResetLine(false);
    bench.Wait(ChipBench::kBoot - 12 * ChipBench::kFrame);
    EXPECT_EQ(bench.ReadDirect(0), 0x5608);
    EXPECT_EQ(bench.ReadDirect(2), 0);
    for (uint8_t reg = 3; reg <= 6; ++reg)
        EXPECT_FALSE(bench.WriteDirect(reg, 1)) << int{reg};
    EXPECT_EQ(bench.chip.Complaint(), "not ready");
    for (uint8_t reg = 4; reg <= 6; ++reg)
        EXPECT_FALSE(bench.ReadDirect(reg)) << int{reg};
    bench.Wait(12 * ChipBench::kFrame);
    EXPECT_EQ(bench.ReadDirect(2), 3);
    EXPECT_EQ(bench.Read(0x0114), 2000);
}

// Gives every writable register another value than its reset value; returns how many took one.
unsigned ChangeEverything(ChipBench& bench)
{
    unsigned changed = 0;
    for (const PageRegister& reg : RegisterPage()) {
        if (reg.access != "RW")
            continue;
        const uint16_t current = *bench.Read(reg.address);
        for (uint16_t value : {1, 2, 0x8001, 0x8003, 64, 0x0601, 0x0006, 0})
            if (value != current && bench.Write(reg.address, value)) {
                ++changed;
                break;
            }
    }
    return changed;
}

unsigned RegistersOffReset(ChipBench& bench)
{
    unsigned count = 0;
    for (const PageRegister& reg : RegisterPage())
        count += bench.Read(reg.address) != ResetValue(reg) ? 1 : 0;
    return count;
}

TEST(VswitchChipReset, LineAndSoftResetBringBackEveryResetValue)
{
    for (const bool soft : {false, true}) {
        ChipBench bench;
        bench.LinkUp(3);
        ASSERT_TRUE(bench.chip.Learn(Station(1), 3, 1));
        ASSERT_TRUE(bench.chip.AddCounter(3, "etherStatsPkts", 5));
        bench.LinkUp(3);
        const unsigned changed = ChangeEverything(bench);
        EXPECT_GT(changed, 700u);
        EXPECT_GE(RegistersOffReset(bench), changed);
        if (soft) {
            EXPECT_TRUE(bench.WriteDirect(3, 1));
            EXPECT_EQ(bench.ReadDirect(2), 0);
            bench.Wait(std::chrono::milliseconds(2));
        } else {
            bench.chip.SetResetLine(true);
            bench.chip.SetResetLine(false);
            bench.Wait(ChipBench::kBoot);
        }
        ASSERT_EQ(bench.ReadDirect(2), 3);
        EXPECT_EQ(bench.ReadDirect(4), 0);
        EXPECT_TRUE(bench.chip.SetLink(3, false, 0, false));
        EXPECT_TRUE(bench.Write(0x0117, 0xFF));
        EXPECT_EQ(RegistersOffReset(bench), 0u);
        EXPECT_EQ(bench.chip.State()["ports"][3]["counters"]["etherStatsPkts"], 0);
    }
}

TEST(VswitchChipReset, HoldingTheLineAgainChangesNothing)
{
    ChipBench bench;
    bench.Write(0x0114, 1500);
    bench.chip.SetResetLine(false);
    EXPECT_EQ(bench.Read(0x0114), 1500);
}

TEST(VswitchChipReset, ReceiveResetTakes500Microseconds)
{
    ChipBench bench;
    bench.Write(0x0114, 1500);
    EXPECT_TRUE(bench.WriteDirect(3, 2));
    EXPECT_EQ(bench.ReadDirect(2), 1);
    EXPECT_FALSE(bench.WriteDirect(3, 2));
    EXPECT_EQ(bench.Read(0x0114), 1500);
    bench.Wait(std::chrono::microseconds(500));
    EXPECT_EQ(bench.ReadDirect(2), 3);
    EXPECT_TRUE(bench.WriteDirect(3, 2));
}

}  // namespace
