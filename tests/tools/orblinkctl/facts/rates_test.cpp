#include "tools/orblinkctl/facts/rates.h"

#include <gtest/gtest.h>

#include "tools/orblinkctl/access/json.h"

namespace ctl {
namespace {

Model Counters(uint64_t octets, uint64_t frames)
{
    Model counters;
    counters["etherStatsOctets"] = octets;
    counters["etherStatsPkts"] = frames;
    counters["aOctetsTransmittedOK"] = octets;
    counters["aFramesTransmittedOK"] = frames;
    return counters;
}

CounterSample At(int milliseconds, const Model& counters)
{
    Model port;
    port["switch"] = 0;
    port["port"] = 1;
    for (const char* key : {"label", "link", "link_speed"})
        port[key] = nullptr;
    port["counters"] = counters;
    return {std::chrono::steady_clock::time_point(std::chrono::milliseconds(milliseconds)),
            Model::array({port})};
}

TEST(Rates, AreDifferencesByTheTimeBetweenTheSamples)
{
    const Model rates = Rates(At(1000, Counters(100, 10)), At(1500, Counters(600, 12)));
    EXPECT_EQ(rates[0]["receive_bytes_per_second"], 1000);
    EXPECT_EQ(rates[0]["receive_frames_per_second"], 4);
    EXPECT_EQ(rates[0]["transmit_bytes_per_second"], 1000);
    EXPECT_EQ(rates[0]["transmit_frames_per_second"], 4);
}

// The counters were set to 0 in between: no number is right.
TEST(Rates, AreUnknownOverAResetOfTheCounters)
{
    const Model rates = Rates(At(1000, Counters(5000, 50)), At(2000, Counters(70, 1)));
    for (const char* name : {"receive_bytes_per_second", "receive_frames_per_second",
                             "transmit_bytes_per_second", "transmit_frames_per_second"})
        EXPECT_TRUE(rates[0][name].is_null()) << name << rates[0][name];
}

// Bytes may already have passed their old value while frames have not.
TEST(Rates, AreUnknownForTheWholePortWhenOneCounterWentBack)
{
    const Model rates = Rates(At(1000, Counters(60, 50)), At(2000, Counters(70, 1)));
    EXPECT_TRUE(rates[0]["receive_bytes_per_second"].is_null());
    EXPECT_TRUE(rates[0]["receive_frames_per_second"].is_null());
}

TEST(Rates, AreUnknownForACounterThatNobodyKeeps)
{
    Model first = Counters(100, 10);
    Model last = Counters(600, 12);
    last["etherStatsOctets"] = first["etherStatsOctets"] = nullptr;
    first["aFramesTransmittedOK"] = nullptr;
    const Model rates = Rates(At(1000, first), At(1500, last));
    EXPECT_TRUE(rates[0]["receive_bytes_per_second"].is_null());
    EXPECT_TRUE(rates[0]["transmit_frames_per_second"].is_null());
    EXPECT_EQ(rates[0]["receive_frames_per_second"], 4);
    EXPECT_EQ(CounterRates(At(1000, first), At(1500, last), 0)["etherStatsPkts"], 4);
    EXPECT_FALSE(CounterRates(At(1000, first), At(1500, last), 0).contains("etherStatsOctets"));
}

TEST(Rates, ComeBackWithTheNextSample)
{
    const Model rates = Rates(At(2000, Counters(70, 1)), At(3000, Counters(170, 3)));
    EXPECT_EQ(rates[0]["receive_bytes_per_second"], 100);
    EXPECT_EQ(rates[0]["receive_frames_per_second"], 2);
}

TEST(Rates, AreUnknownWithoutCountersOrTime)
{
    EXPECT_TRUE(
        Rates(At(1, Model()), At(2, Counters(1, 1)))[0]["receive_bytes_per_second"].is_null());
    EXPECT_TRUE(
        Rates(At(1, Counters(1, 1)), At(2, Model()))[0]["receive_bytes_per_second"].is_null());
    EXPECT_TRUE(Rates(At(2, Counters(1, 1)), At(2, Counters(9, 9)))[0]["receive_bytes_per_second"]
                    .is_null());
}

}  // namespace
}  // namespace ctl
