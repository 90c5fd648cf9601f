// What the settings of the library do to traffic between hosts, on the virtual switch alone.
#include "tests/virtual_board/cables/traffic.h"

#include <algorithm>

using namespace traffic;

TEST_F(Traffic, ProviderBridgingAddsAServiceTagToAServiceTag)
{
    ExpectAServiceTagBefore("88a8600a");
}

TEST_F(Traffic, FramesLongerThanTheMtuAreDroppedAndCounted)
{
    EXPECT_EQ(Run("ctl mtu 0 1000; reach a 10.0.0.2\n"
                  "on a ping -c 3 -i 0.2 -W 1 -s 1200 10.0.0.2 >/dev/null && echo passed\n"
                  "orblinkctl port 0:1 counters --json >$S/counters; true\n"),
              "yes\n");
    const auto counters = Json("counters")["ports"][0]["counters"];
    EXPECT_EQ(counters["dot1dBasePortMtuExceededDiscards"], 3);
    EXPECT_EQ(counters["etherStatsOversizePkts"], 3);
}

TEST_F(Traffic, CountersEqualTheCapture)
{
    Run("hear b; ctl port 0:1 counters reset; ctl port 0:2 counters reset\n"
        "on a ping -c 5 -i 0.2 -s 300 10.0.0.2 >/dev/null\n"
        "send a " +
        Frame(kAll, kFromA, "", 500) + " 7\nheard b\n" +
        "for p in 1 2; do orblinkctl port 0:$p counters --json >$S/counters$p; done\n");
    uint64_t octets = 0, broadcasts = 0, frames = 0;
    for (const Octets& frame : Frames("b", true)) {
        octets += std::max<size_t>(frame.size(), 60) + 4;
        broadcasts += frame[0] == 0xFF ? 1 : 0;
        ++frames;
    }
    const auto a = Json("counters1")["ports"][0]["counters"];
    const auto b = Json("counters2")["ports"][0]["counters"];
    EXPECT_GE(frames, 13u);
    EXPECT_EQ(a["etherStatsPkts"], frames);
    EXPECT_EQ(a["etherStatsOctets"], octets);
    EXPECT_EQ(a["etherStatsBroadcastPkts"], broadcasts);
    EXPECT_EQ(a["etherStatsPkts512to1023Octets"], 7);
    EXPECT_EQ(b["aFramesTransmittedOK"], frames);
    EXPECT_EQ(b["aOctetsTransmittedOK"], octets - 18 * frames);
    EXPECT_EQ(b["aBroadcastFramesXmittedOK"], broadcasts);
}

TEST_F(Traffic, TheLinkFollowsTheCableAndTheHostsInterface)
{
    EXPECT_EQ(Run("link() { orblinkctl port 0:1 link | awk 'END { print $3 }'; }\n"
                  "link; orblink-vboard control link sw0:1 down; link\n"
                  "orblink-vboard control link sw0:1 up; link\n"
                  "on a ip link set lan1 down; link; on a ip link set lan1 up; link\n"),
              "yes\nno\nyes\nno\nyes\n");
}

TEST_F(Traffic, ASlowPortCarriesItsSpeedOnly)
{
    Run("ctl port 0:2 speed 10 full\n"
        "until orblinkctl port 0:2 link | grep -q yes; do sleep 0.05; done\n"
        "orblink-vboard exec b -- iperf3 -s -1 >/dev/null & pid=$!\n"
        "until on b ss -ltn | grep -q 5201; do sleep 0.05; done\n"
        "on a iperf3 -c 10.0.0.2 -t 2 --json >$S/iperf; wait $pid\n");
    // 10 Mb/s on the board's time, which runs twenty times as fast.
    const double rate = Json("iperf")["end"]["sum_received"]["bits_per_second"];
    EXPECT_LT(rate, 200e6);
    EXPECT_GT(rate, 1e6);
}
