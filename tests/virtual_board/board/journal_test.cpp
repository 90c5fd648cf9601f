#include "virtual_board/board/journal.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace vboard {
namespace {

TEST(Journal, KeepsTheLatestAndCountsWhatItDropped)
{
    BoardClock clock{1};
    Journal journal{clock, 3};
    for (int i = 0; i < 5; ++i)
        journal.Note({JournalKind::kMdio, "read", {{"i", i}}});
    Json shown = journal.Show({});
    EXPECT_EQ(shown["dropped"], 2);
    ASSERT_EQ(shown["entries"].size(), 3U);
    EXPECT_EQ(shown["entries"][0]["number"], 3);
    EXPECT_EQ(shown["entries"][0]["facts"]["i"], 2);
    EXPECT_EQ(shown["entries"][2]["facts"]["i"], 4);
}

TEST(Journal, AnEntryHasCallerTimeAndOutcome)
{
    BoardClock clock{0.5};
    Journal journal{clock};
    journal.SetCaller(1234);
    EXPECT_EQ(journal.Note({JournalKind::kLane, "reset", {{"client", 3}}, EIO, "broken"}), EIO);
    auto before = clock.Now();
    EXPECT_EQ(journal.Note({JournalKind::kLane, "reset"}), 0);
    Json entries = journal.Show({})["entries"];
    EXPECT_EQ(entries[0]["pid"], 1234);
    EXPECT_EQ(entries[0]["kind"], "lane");
    EXPECT_EQ(entries[0]["result"], "EIO");
    EXPECT_EQ(entries[0]["note"], "broken");
    EXPECT_EQ(entries[1]["result"], "ok");
    EXPECT_FALSE(entries[1].contains("note"));
    EXPECT_GE(entries[1]["timeNs"].get<int64_t>(), before.count());
}

TEST(Journal, FiltersBeforeItCountsTheTail)
{
    BoardClock clock{1};
    Journal journal{clock};
    for (int i = 0; i < 4; ++i) {
        journal.Note({JournalKind::kGpio, "write", {{"i", i}}});
        journal.Note({JournalKind::kMdio, "read"});
    }
    Json shown = journal.Show({JournalKind::kGpio, 2})["entries"];
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0]["facts"]["i"], 2);
    EXPECT_EQ(shown[1]["facts"]["i"], 3);
    EXPECT_EQ(journal.Show({JournalKind::kAttr, 2})["entries"].size(), 0U);
    EXPECT_EQ(journal.Show({std::nullopt, 0})["entries"].size(), 0U);
}

TEST(Journal, KindsHaveNames)
{
    for (size_t i = 0; i < std::size(kJournalKindNames); ++i)
        EXPECT_EQ(JournalKindFromName(kJournalKindNames[i]), static_cast<JournalKind>(i));
    EXPECT_EQ(JournalKindFromName("radio"), std::nullopt);
}

TEST(Journal, ErrnosHaveNames)
{
    EXPECT_EQ(ErrnoName(0), "ok");
    EXPECT_EQ(ErrnoName(EHOSTDOWN), "EHOSTDOWN");
    EXPECT_EQ(ErrnoName(5000), "errno 5000");
}

}  // namespace
}  // namespace vboard
