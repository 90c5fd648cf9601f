#include <cstring>

#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;
using testing::ElementsAre;

namespace {

using Mac = std::vector<uint8_t>;

const Mac kMac = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB};
constexpr uint16_t kWhole = 0xFFF;

class MacVlan : public EnabledSwitch {
protected:
    static Mac Numbered(int number) { return {2, 0, 0, 0, 0, static_cast<uint8_t>(number)}; }

    static int Map(const Mac& mac, uint8_t port = 1, uint16_t vlan = 100, uint16_t mask = kWhole,
                   int enable = 1)
    {
        return ORBLINK_MapMactoVlan(0, port, mac.data(), mask, vlan, enable);
    }

    static int Unmap(const Mac& mac, uint8_t port = 1, uint16_t mask = kWhole)
    {
        return Map(mac, port, 100, mask, 0);
    }

    Mac StoredMac(int index) const
    {
        const MacToVlanEntry& entry = table[index];
        return {entry.Mac, entry.Mac + 6};
    }

    std::vector<int> UsedEntries() const
    {
        std::vector<int> used;
        for (int i = 0; i < OB_MAC_VLAN_ENTRIES; ++i)
            if (table[i].EnableMapping != 0)
                used.push_back(i);
        return used;
    }

    MacToVlanEntry (&table)[OB_MAC_VLAN_ENTRIES] = config.macToVlanTable;
};

struct MaskCase {
    const char* name;
    uint16_t mask;
    Mac stored;
    const char* sent;
};

class MacVlanMask : public MacVlan, public testing::WithParamInterface<MaskCase> {};

TEST_P(MacVlanMask, FillsTheNibblesThatDoNotCount)
{
    EXPECT_EQ(Map(kMac, 1, 100, GetParam().mask), 0);
    EXPECT_EQ(StoredMac(0), GetParam().stored);
    EXPECT_EQ(table[0].Mask, GetParam().mask);
    EXPECT_HALS("hal0 MapSetMacToVlan(0, 1, " + std::string(GetParam().sent) + ", " +
                std::to_string(GetParam().mask) + ", 100, 1)");
}

INSTANTIATE_TEST_SUITE_P(
    Masks, MacVlanMask,
    testing::ValuesIn(std::vector<MaskCase>{
        {"Whole", 0xFFF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB}, "01:23:45:67:89:AB"},
        {"None", 0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "FF:FF:FF:FF:FF:FF"},
        {"LastDigit", 0x001, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFB}, "FF:FF:FF:FF:FF:FB"},
        {"LastButOne", 0x002, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xAF}, "FF:FF:FF:FF:FF:AF"},
        {"FirstDigit", 0x800, {0x0F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "0F:FF:FF:FF:FF:FF"},
        {"SecondDigit", 0x400, {0xF1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "F1:FF:FF:FF:FF:FF"},
        {"Vendor", 0xFC0, {0x01, 0x23, 0x45, 0xFF, 0xFF, 0xFF}, "01:23:45:FF:FF:FF"},
        {"Alternate", 0x555, {0xF1, 0xF3, 0xF5, 0xF7, 0xF9, 0xFB}, "F1:F3:F5:F7:F9:FB"},
        {"HighBits", 0xF000, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "FF:FF:FF:FF:FF:FF"},
        {"AllBits", 0xFFFF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB}, "01:23:45:67:89:AB"}}),
    [](const auto& info) { return info.param.name; });

TEST_F(MacVlan, StoresEveryField)
{
    table[0].padding = 0xEE;
    EXPECT_EQ(Map(kMac, 3, 4095), 0);
    EXPECT_EQ(table[0].VlanId, 4095);
    EXPECT_EQ(table[0].LogPort, 3);
    EXPECT_EQ(table[0].Mask, kWhole);
    EXPECT_EQ(table[0].EnableMapping, 1U);
    EXPECT_EQ(table[0].padding, 0xEE);
    EXPECT_THAT(UsedEntries(), ElementsAre(0));
}

TEST_F(MacVlan, StoresAnyNonZeroEnableMappingAsOneAndSendsItAsItIs)
{
    EXPECT_EQ(Map(kMac, 1, 100, kWhole, -5), 0);
    EXPECT_EQ(table[0].EnableMapping, 1U);
    EXPECT_HALS("hal0 MapSetMacToVlan(0, 1, 01:23:45:67:89:AB, 4095, 100, -5)");
}

TEST_F(MacVlan, RewritesTheEntryOfTheSameAddressAndPort)
{
    ASSERT_EQ(Map(kMac, 1, 100), 0);
    EXPECT_EQ(Map(kMac, 1, 200), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(0));
    EXPECT_EQ(table[0].VlanId, 200);
}

TEST_F(MacVlan, AddressesThatAreEqualOnceMaskedAreOneEntry)
{
    ASSERT_EQ(Map({2, 0, 0, 0, 0, 0x11}, 1, 100, 0xFFE), 0);
    EXPECT_EQ(Map({2, 0, 0, 0, 0, 0x12}, 1, 200, 0xFFE), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(0));
    EXPECT_EQ(table[0].VlanId, 200);
}

TEST_F(MacVlan, TheSameAddressOnTwoPortsTakesTwoEntries)
{
    EXPECT_EQ(Map(kMac, 1), 0);
    EXPECT_EQ(Map(kMac, 2), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(0, 1));
    EXPECT_EQ(Unmap(kMac, 1), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(1));
}

TEST_F(MacVlan, RemovingClearsTheMarkOnlyAndTellsTheChip)
{
    ASSERT_EQ(Map(kMac, 1, 300), 0);
    transcript.Clear();
    EXPECT_EQ(Unmap(kMac), 0);
    EXPECT_HALS("hal0 MapSetMacToVlan(0, 1, 01:23:45:67:89:AB, 4095, 100, 0)");
    EXPECT_EQ(table[0].EnableMapping, 0U);
    EXPECT_EQ(table[0].VlanId, 300);
    EXPECT_EQ(StoredMac(0), kMac);
}

TEST_F(MacVlan, RemovingWhatIsNotThereSucceedsChangesNothingAndTellsTheChip)
{
    const SwitchProvConfig before = config;
    EXPECT_EQ(Unmap(kMac), 0);
    EXPECT_EQ(memcmp(&config, &before, sizeof(before)), 0);
    EXPECT_HALS("hal0 MapSetMacToVlan(0, 1, 01:23:45:67:89:AB, 4095, 100, 0)");
}

TEST_F(MacVlan, AddingAgainReusesTheSameEntryAlsoWithAFreeOneBefore)
{
    ASSERT_EQ(Map(Numbered(0)), 0);
    ASSERT_EQ(Map(Numbered(1)), 0);
    ASSERT_EQ(Unmap(Numbered(0)), 0);
    ASSERT_EQ(Unmap(Numbered(1)), 0);
    EXPECT_EQ(Map(Numbered(1)), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(1));
}

TEST_F(MacVlan, OfTwoEqualEntriesTheFirstCounts)
{
    ASSERT_EQ(Map(kMac, 1, 100), 0);
    table[3] = table[0];
    EXPECT_EQ(Map(kMac, 1, 200), 0);
    EXPECT_EQ(table[0].VlanId, 200);
    EXPECT_EQ(table[3].VlanId, 100);
    EXPECT_EQ(Unmap(kMac), 0);
    EXPECT_THAT(UsedEntries(), ElementsAre(3));
}

TEST_F(MacVlan, ANewAddressTakesTheFirstFreeEntry)
{
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(Map(Numbered(i)), 0);
    ASSERT_EQ(Unmap(Numbered(1)), 0);
    ASSERT_EQ(Unmap(Numbered(2)), 0);
    EXPECT_EQ(Map(Numbered(9)), 0);
    EXPECT_EQ(StoredMac(1), Numbered(9));
    EXPECT_THAT(UsedEntries(), ElementsAre(0, 1, 3));
}

TEST_F(MacVlan, A33rdAddressFindsNoEntryAndIsNotSent)
{
    for (int i = 0; i < OB_MAC_VLAN_ENTRIES; ++i)
        ASSERT_EQ(Map(Numbered(i)), 0) << i;
    EXPECT_EQ(UsedEntries().size(), 32U);
    transcript.Clear();
    EXPECT_EQ(Map(Numbered(32)), -1);
    EXPECT_LOGS("log1 _SetMacVlanMapping:# No empty entries in Mac to Vlan table",
                "log1 ORBLINK_MapMactoVlan:# orbLinkDb_SetMacVlanMapping failed");
    EXPECT_HALS();
    EXPECT_EQ(Map(Numbered(31), 1, 200), 0);
    EXPECT_EQ(table[31].VlanId, 200);
    EXPECT_EQ(Unmap(Numbered(32)), 0);
}

TEST_F(MacVlan, AFullTableOfASwitchThatIsNotEnabledRefusesAsWell)
{
    config.state = 0;
    for (int i = 0; i < OB_MAC_VLAN_ENTRIES; ++i)
        ASSERT_EQ(Map(Numbered(i)), 0) << i;
    EXPECT_EQ(Map(Numbered(32)), -1);
}

TEST_F(MacVlan, ARemovalStaysWhenTheHalFails)
{
    ASSERT_EQ(Map(kMac), 0);
    platform.FailSlot("MapSetMacToVlan");
    transcript.Clear();
    EXPECT_EQ(Unmap(kMac), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_MapMactoVlan:# MapSetMacToVlan failed, LogPort=1, Mac=01:23:45:67:89:AB, "
        "Mask=0FFF, VlanId=100, EnableMapping=0");
    EXPECT_THAT(UsedEntries(), testing::IsEmpty());
}

TEST_F(MacVlan, ANullAddressFails)
{
    EXPECT_EQ(ORBLINK_MapMactoVlan(0, 1, nullptr, kWhole, 100, 1), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_MapMactoVlan:# Runtime-constraint violation error in function "
        "kova_memcpy_s");
    EXPECT_HALS();
    EXPECT_THAT(UsedEntries(), testing::IsEmpty());
}

TEST_F(MacVlan, AFailingCopyIntoTheTableChangesNothing)
{
    platform.Fail("kova_memcpy_s", 0, 2);
    EXPECT_EQ(Map(kMac), -1);
    EXPECT_LOGS(
        "log1 _SetMacVlanMapping:# Runtime-constraint violation error in function kova_memcpy_s",
        "log1 ORBLINK_MapMactoVlan:# orbLinkDb_SetMacVlanMapping failed");
    EXPECT_HALS();
    EXPECT_THAT(UsedEntries(), testing::IsEmpty());
}

TEST_F(MacVlan, TheTableIsHandedOutWholeWithItsFreeEntries)
{
    ASSERT_EQ(Map(Numbered(0)), 0);
    ASSERT_EQ(Map(Numbered(1)), 0);
    ASSERT_EQ(Unmap(Numbered(0)), 0);
    uint8_t buffer[514];
    memset(buffer, 0xA5, sizeof(buffer));
    EXPECT_EQ(ORBLINK_GetMactoVlanTable(0, buffer + 1), 0);
    EXPECT_EQ(memcmp(buffer + 1, table, 512), 0);
    EXPECT_EQ(buffer[0], 0xA5);
    EXPECT_EQ(buffer[513], 0xA5);
    // Entry 1, byte by byte.
    const Mac entry = {buffer + 17, buffer + 33};
    EXPECT_THAT(entry, ElementsAre(100, 0, 2, 0, 0, 0, 0, 1, 0xFF, 0x0F, 1, 0, 1, 0, 0, 0));
}

TEST_F(MacVlan, TheTableGoesIntoNoNullBuffer)
{
    EXPECT_EQ(ORBLINK_GetMactoVlanTable(0, nullptr), -1);
    EXPECT_LOGS(
        "log1 ORBLINK_GetMactoVlanTable:# Runtime-constraint violation error in function "
        "kova_memcpy_s");
}

}  // namespace
