#include "tools/orblink_web/reader/schedule.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace web {
namespace {

constexpr char kBoard[] =
    R"({"ports": [{"switch": 0, "port": 1}, {"switch": 1, "port": 2}], "phys": [{"phy": 1}]})";

std::map<std::string, int> ReadingsIn(Schedule& schedule, int64_t seconds, int64_t each)
{
    std::map<std::string, int> counts;
    for (int64_t now = 1000000; now < 1000000 + seconds * 1000; now += each)
        if (const Words* words = schedule.Next(now))
            ++counts[words->empty() ? "" : words->front() + (words->size() > 1 ? "+" : "")];
    return counts;
}

TEST(Schedule, BeginsWithTheOverviewAndReadsItOften)
{
    Schedule schedule(5000);
    const Words* first = schedule.Next(1000000);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->empty());
    auto counts = ReadingsIn(schedule, 20, 10);
    EXPECT_GE(counts[""], 60);
    EXPECT_EQ(counts["port"], 7);
    EXPECT_EQ(counts["metrics"], 4);
}

TEST(Schedule, ReadsWhatTheBoardHas)
{
    Schedule schedule(5000);
    schedule.Learn(kBoard);
    std::set<Words> seen;
    for (int64_t now = 1000000; now < 1006000; now += 10)
        if (const Words* words = schedule.Next(now))
            seen.insert(*words);
    EXPECT_EQ(seen.count({"port", "0:1", "counters"}), 1U);
    EXPECT_EQ(seen.count({"port", "1:2", "counters"}), 1U);
    EXPECT_EQ(seen.count({"phy", "1", "counters"}), 1U);
    EXPECT_EQ(seen.count({"mdio", "1", "0-10"}), 1U);
}

TEST(Schedule, LeavesTheRegistersAloneWhenToldTo)
{
    Schedule schedule(0);
    schedule.Learn(kBoard);
    for (int64_t now = 1000000; now < 1020000; now += 10)
        if (const Words* words = schedule.Next(now)) {
            EXPECT_TRUE(words->empty() || words->front() != "mdio");
        }
}

// However long each reading takes, links come every other time and nothing is left out.
TEST(Schedule, OfASlowBoardStarvesNothing)
{
    Schedule schedule(5000);
    schedule.Learn(kBoard);
    auto counts = ReadingsIn(schedule, 100, 1000);
    EXPECT_GE(counts[""], 49);
    for (const char* word : {"mac", "port", "show", "board", "metrics", "mdio+", "phy+", "port+"})
        EXPECT_GE(counts[word], 1) << word;
}

TEST(Schedule, KeepsItsPlacesAndIgnoresWhatIsNoOverview)
{
    Schedule schedule(5000);
    schedule.Learn(kBoard);
    while (schedule.Next(1000000) != nullptr)
        continue;
    const int64_t wait = schedule.Wait(1000000);
    EXPECT_GT(wait, 0);
    EXPECT_LE(wait, 250);
    for (const char* text : {"", "{", "{}", R"({"ports": 1, "phys": []})", kBoard}) {
        schedule.Learn(text);
        EXPECT_EQ(schedule.Next(1000000), nullptr) << text;
    }
}

}  // namespace
}  // namespace web
