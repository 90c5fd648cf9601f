// A cable that is not a good one.
#include "virtual_board/cables/wire.h"

#include <gmock/gmock.h>

using namespace vboard;
using namespace vboard::cables;
using namespace std::chrono_literals;

using datapath::Damage;

namespace {

const std::vector<uint8_t> kFrame = {1, 2, 3};

std::vector<Wire::Arrival> All(Wire& wire)
{
    std::vector<Wire::Arrival> all;
    while (const auto next = wire.NextArrival())
        all.push_back(*wire.Receive(*next));
    return all;
}

}  // namespace

TEST(Wire, IsGoodUntilItIsToldOtherwise)
{
    Wire wire{1};
    EXPECT_TRUE(wire.IsGood());
    wire.Set({.loss = 1});
    EXPECT_FALSE(wire.IsGood());
    wire.Set({});
    EXPECT_TRUE(wire.IsGood());
}

TEST(Wire, DelaysAndStaysInUseUntilTheLastFrameIsOut)
{
    Wire wire{1};
    wire.Set({.delay = 10ms});
    wire.Send(true, kFrame, 5ms);
    EXPECT_EQ(wire.NextArrival(), 15ms);
    EXPECT_FALSE(wire.Receive(15ms - 1ns));
    wire.Set({});
    EXPECT_FALSE(wire.IsGood());
    const auto arrival = wire.Receive(15ms);
    ASSERT_TRUE(arrival);
    EXPECT_TRUE(arrival->atSwitch);
    EXPECT_FALSE(arrival->damage);
    EXPECT_EQ(arrival->frame, kFrame);
    EXPECT_TRUE(wire.IsGood());
}

TEST(Wire, KeepsTheOrderUnlessItHasJitter)
{
    Wire wire{1};
    wire.Set({.delay = 10ms});
    for (uint8_t i = 0; i < 20; ++i)
        wire.Send(false, std::vector{i}, 0ms);
    uint8_t expected = 0;
    for (const auto& arrival : All(wire)) {
        EXPECT_FALSE(arrival.atSwitch);
        EXPECT_EQ(arrival.frame[0], expected++);
    }
    EXPECT_EQ(expected, 20);
}

TEST(Wire, JitterStaysWithinItsBounds)
{
    Wire wire{1};
    wire.Set({.delay = 10ms, .jitter = 2ms});
    Wire::Time earliest = 1s;
    Wire::Time latest{};
    for (int i = 0; i < 1000; ++i) {
        wire.Send(true, kFrame, 0ms);
        const Wire::Time due = *wire.NextArrival();
        earliest = std::min(earliest, due);
        latest = std::max(latest, due);
        ASSERT_TRUE(wire.Receive(due));
    }
    EXPECT_GE(earliest, 8ms);
    EXPECT_LT(earliest, 8100us);
    EXPECT_LE(latest, 12ms);
    EXPECT_GT(latest, 11900us);
}

TEST(Wire, LosesDuplicatesAndSpoilsAsOftenAsAsked)
{
    Wire wire{1};
    wire.Set({.fcsErrors = 100'000, .loss = 200'000, .duplicates = 500'000});
    for (int i = 0; i < 10'000; ++i)
        wire.Send(true, kFrame, 0ms);
    const auto all = All(wire);
    const auto bad = std::ranges::count(all, Damage::kBadCheck, &Wire::Arrival::damage);
    EXPECT_NEAR(static_cast<double>(all.size()), 12'000, 300);
    EXPECT_NEAR(static_cast<double>(bad), 1'200, 120);
    wire.Set({.loss = WireFaults::kAll});
    wire.Send(true, kFrame, 0ms);
    EXPECT_FALSE(wire.NextArrival());
}

TEST(Wire, CutsFramesOffBelowTheShortestLength)
{
    Wire wire{1};
    const std::vector<uint8_t> frame(1000, 7);
    wire.Set({.undersize = WireFaults::kAll});
    wire.Send(true, frame, 0ms);
    wire.Set({.fragments = WireFaults::kAll});
    wire.Send(true, frame, 0ms);
    const auto all = All(wire);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].damage, Damage::kShort);
    EXPECT_EQ(all[1].damage, Damage::kFragment);
    for (const auto& arrival : all)
        EXPECT_LT(arrival.frame.size() + 4, 64u);
}

TEST(Wire, CollidesOnAHalfDuplexLinkOnly)
{
    Wire wire{1};
    wire.Set({.collisions = 500'000});
    unsigned collisions = 0;
    for (int i = 0; i < 1000; ++i)
        collisions += wire.Send(true, kFrame, 0ms, true);
    EXPECT_NEAR(collisions, 1000, 150) << "half of the frames once, a quarter twice...";
    EXPECT_EQ(All(wire).size(), 1000u);
    EXPECT_EQ(wire.Send(true, kFrame, 0ms, false), 0u);
    wire.Set({.collisions = WireFaults::kAll});
    All(wire);
    EXPECT_EQ(wire.Send(true, kFrame, 0ms, true), 16u);
    EXPECT_FALSE(wire.NextArrival()) << "it was given up";
}
