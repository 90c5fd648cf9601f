#include "tools/orblink_web/view/traffic.h"

#include <gtest/gtest.h>

#include "tools/orblinkctl/access/json.h"

namespace web {
namespace {

ctl::Model Port()
{
    return ctl::Model::parse(
        R"({"switch": 0, "port": 1, "label": null, "link": true, "link_speed": "1000"})");
}

ctl::Model Counters(uint64_t received, uint64_t sent)
{
    return {{"etherStatsOctets", received}, {"aOctetsTransmittedOK", sent}};
}

TEST(Traffic, IsTheDifferenceOfTwoReadings)
{
    Traffic traffic;
    EXPECT_TRUE(traffic.RatesOf("0:1").is_null());
    traffic.Take("0:1", Port(), Counters(1000, 50), 10000);
    EXPECT_TRUE(traffic.RatesOf("0:1")["receive_bytes_per_second"].is_null());
    traffic.Take("0:1", Port(), Counters(3000, 150), 12000);
    EXPECT_EQ(traffic.RatesOf("0:1")["receive_bytes_per_second"], 1000);
    EXPECT_EQ(traffic.RatesOf("0:1")["transmit_bytes_per_second"], 50);
    EXPECT_EQ(traffic.Newest(), R"({"0:1":[[12000,1000,50]]})");
    EXPECT_EQ(traffic.History(), R"({"0:1":[[10000,null,null],[12000,1000,50]]})");
}

TEST(Traffic, IsUnknownWhereCountersAre)
{
    Traffic traffic;
    traffic.Take("0:1", Port(), Counters(5000, 50), 10000);
    traffic.Take("0:1", Port(), Counters(10, 60), 11000);
    EXPECT_TRUE(traffic.RatesOf("0:1")["receive_bytes_per_second"].is_null());
    traffic.Take("0:1", Port(), nullptr, 12000);
    EXPECT_TRUE(traffic.CountersOf("0:1").is_null());
    traffic.Take("0:1", Port(), Counters(20, 70), 13000);
    EXPECT_EQ(traffic.Newest(), R"({"0:1":[[13000,null,null]]})");
}

TEST(Traffic, KeepsTheLastMinutesAndNoMore)
{
    Traffic traffic;
    for (uint64_t i = 0; i < 1000; ++i)
        traffic.Take("0:1", Port(), Counters(i * 10, 0), static_cast<int64_t>(i) * 1000);
    const auto history = ctl::Model::parse(traffic.History());
    EXPECT_EQ(history["0:1"].size(), 300U);
    EXPECT_EQ(history["0:1"].back(), ctl::Model::array({999000, 10, 0}));
    traffic.Clear();
    EXPECT_EQ(traffic.History(), "{}");
}

}  // namespace
}  // namespace web
