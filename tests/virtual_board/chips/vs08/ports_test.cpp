// Ports, links and the source-MAC-to-VLAN table of the chip model.
#include <gtest/gtest.h>

#include "tests/virtual_board/chips/vs08/chip_bench.h"

namespace {

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

}  // namespace
