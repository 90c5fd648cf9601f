#include <cerrno>
#include <cstring>

#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

uint32_t walked = 0;

uint32_t CountEntry(MacEntry* entry)
{
    walked += entry->data[0];
    return entry->contextWord == 0 ? 1 : 0;
}

class MacTableWalk : public EnabledSwitch {
protected:
    MacTableWalk() { memset(&table, 0xA5, sizeof(table)); }

    static MacEntryCallback CallbackOf(const SlotArgs& args)
    {
        return reinterpret_cast<MacEntryCallback>(args[1]);
    }

    static MacEntry Numbered(int number, intptr_t context)
    {
        MacEntry entry = {};
        memset(entry.data, number & 0xFF, sizeof(entry.data));
        entry.data[0] = static_cast<uint8_t>(number >> 8);
        entry.contextWord = static_cast<uint32_t>(context);
        return entry;
    }

    // A HAL that reports so many entries and returns the code.
    void Walk(int entries, int code = 0)
    {
        platform.slots["ForEachMacEntry"] = [this, entries, code](const SlotArgs& args) {
            for (int i = 0; i < entries; ++i) {
                MacEntry entry = Numbered(i, args[2]);
                results.push_back(CallbackOf(args)(&entry));
                memset(&entry, 0xFF, sizeof(entry));
            }
            return code;
        };
    }

    // A HAL that reports one entry, made by the test, and what the library answers.
    uint32_t Answer(const std::function<MacEntry*(const SlotArgs&)>& make)
    {
        uint32_t answer = 77;
        platform.slots["ForEachMacEntry"] = [&](const SlotArgs& args) {
            answer = CallbackOf(args)(make(args));
            return 0;
        };
        EXPECT_EQ(ORBLINK_GetMacTable(0, &table), 0);
        return answer;
    }

    void ExpectEntries(uint32_t count)
    {
        EXPECT_EQ(table.count, count);
        const auto context = reinterpret_cast<intptr_t>(&table);
        for (uint32_t i = 0; i < OB_MAC_TABLE_ENTRIES; ++i) {
            MacEntry expected = {};
            if (i < count)
                expected = Numbered(static_cast<int>(i), context);
            ASSERT_EQ(memcmp(&table.entry[i], &expected, sizeof(expected)), 0) << i;
        }
    }

    MacTable table;
    std::vector<uint32_t> results;
};

TEST_F(MacTableWalk, OfNoEntryLeavesAnEmptyTable)
{
    Walk(0);
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), 0);
    ExpectEntries(0);
    EXPECT_EQ(table.overflow, 0U);
}

TEST_F(MacTableWalk, Of256EntriesFillsTheTableWithoutOverflow)
{
    Walk(256);
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), 0);
    ExpectEntries(256);
    EXPECT_EQ(table.overflow, 0U);
}

TEST_F(MacTableWalk, Of257EntriesOverflows)
{
    Walk(257);
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), 0);
    ExpectEntries(256);
    EXPECT_EQ(table.overflow, 1U);
}

TEST_F(MacTableWalk, Of300EntriesGoesOnToTheEndAndKeepsTheFirst256InOrder)
{
    Walk(300);
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), 0);
    ExpectEntries(256);
    EXPECT_EQ(table.overflow, 1U);
    EXPECT_EQ(results, std::vector<uint32_t>(300, 1));
    EXPECT_LOGS();
}

TEST_F(MacTableWalk, ThatFailsKeepsTheEntriesCopiedSoFar)
{
    Walk(3, 7);
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), -1);
    ExpectEntries(3);
    EXPECT_LOGS("log1 ORBLINK_GetMacTable:# ForEachMacEntry failed, DevIdx=0");
}

TEST_F(MacTableWalk, OnASwitchThatIsNotEnabledLeavesTheTableUntouched)
{
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_GetMacTable(0, &table), -1);
    EXPECT_EQ(ORBLINK_GetMacTable(1, &table), -1);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&table);
    for (size_t i = 0; i < sizeof(table); ++i)
        ASSERT_EQ(bytes[i], 0xA5) << i;
}

TEST_F(MacTableWalk, IntoNoTableFailsBeforeTheSemaphoreIsTaken)
{
    EXPECT_EQ(ORBLINK_GetMacTable(0, nullptr), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_GetMacTable:# ", "log1 ORBLINK_GetMacTable:# MacTable is NULL");
}

TEST_F(MacTableWalk, GoesOnAfterANullEntry)
{
    EXPECT_EQ(Answer([](const SlotArgs&) { return nullptr; }), 1U);
    EXPECT_EQ(table.count, 0U);
}

TEST_F(MacTableWalk, StopsAtAnEntryWithoutItsContext)
{
    MacEntry entry = Numbered(1, 0);
    EXPECT_EQ(Answer([&](const SlotArgs&) { return &entry; }), 0U);
    EXPECT_EQ(table.count, 0U);
}

TEST_F(MacTableWalk, StopsAtAnEntryWithAnotherContext)
{
    MacEntry entry;
    EXPECT_EQ(Answer([&](const SlotArgs& args) {
                  entry = Numbered(1, args[2] + 4);
                  return &entry;
              }),
              0U);
    EXPECT_EQ(table.count, 0U);
}

TEST_F(MacTableWalk, StopsAtAnEntryThatCannotBeCopied)
{
    MacEntry entry;
    platform.Fail("kova_memcpy_s", 0);
    EXPECT_EQ(Answer([&](const SlotArgs& args) {
                  entry = Numbered(1, args[2]);
                  return &entry;
              }),
              0U);
    EXPECT_EQ(table.count, 0U);
    EXPECT_LOGS(
        "log1 _AddMacToOutputTable:# Runtime-constraint violation error in function "
        "kova_memcpy_s");
}

TEST_F(MacTableWalk, AnEntryThatComesAfterTheWalkFindsNoTable)
{
    MacEntryCallback kept = nullptr;
    MacEntry entry;
    platform.slots["ForEachMacEntry"] = [&](const SlotArgs& args) {
        kept = CallbackOf(args);
        entry = Numbered(1, args[2]);
        return 0;
    };
    ASSERT_EQ(ORBLINK_GetMacTable(0, &table), 0);
    EXPECT_EQ(kept(&entry), 0U);
    EXPECT_EQ(table.count, 0U);
    platform.FailSlot("ForEachMacEntry");
    ASSERT_EQ(ORBLINK_GetMacTable(0, &table), -1);
    EXPECT_EQ(kept(&entry), 0U);
}

TEST_F(MacTableWalk, CallsTheCallersOwnCallbackWithANullContext)
{
    walked = 0;
    Walk(512);
    EXPECT_EQ(ORBLINK_ForEachMacEntry(0, CountEntry), 0);
    EXPECT_HALS("hal0 ForEachMacEntry(0, ptr, null)");
    EXPECT_EQ(results, std::vector<uint32_t>(512, 1));
    EXPECT_EQ(walked, 256U);
}

TEST_F(MacTableWalk, RunsTheCallbackUnderTheSemaphore)
{
    static int during;
    during = -1;
    Walk(1);
    EXPECT_EQ(ORBLINK_ForEachMacEntry(0,
                                      [](MacEntry*) {
                                          during = SemaphoreValue();
                                          return 1U;
                                      }),
              0);
    EXPECT_EQ(during, 0);
}

}  // namespace
