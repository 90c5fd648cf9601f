// What the settings of the library do to traffic between hosts.
#include "tests/virtual_board/cables/traffic.h"

#include <algorithm>
#include <set>

using namespace traffic;
using ::testing::ElementsAre;

namespace {

const std::string kAll = "ffffffffffff";
const std::string kFromA = "020000000001";
const std::string kFromB = "020000000002";

// General queries, from a router behind port 4.
const std::string kIgmpQuery =
    "01005e0000010200000000040800460000200000000001023ad30a000004e000"
    "0001940400001164ee9b00000000";
const std::string kMldQuery =
    "33330000000102000000000486dd6000000000200001fe800000000000000000"
    "000000000004ff0200000000000000000000000000013a000502000001008200"
    "59142710000000000000000000000000000000000000";

std::set<std::string> Addresses(const nlohmann::json& table)
{
    std::set<std::string> addresses;
    for (const auto& entry : table["entries"])
        addresses.insert(entry["mac"]);
    return addresses;
}

std::string Text(const Octets& mac)
{
    char text[18];
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5]);
    return text;
}

}  // namespace

TEST_F(Traffic, HostsAndTheSocReachEachOther)
{
    EXPECT_EQ(Run("reach a 10.0.0.2; reach b 10.0.0.3; reach c 10.0.0.100; reach soc 10.0.0.1"),
              "yes\nyes\nyes\nyes\n");
}

TEST_F(Traffic, VlansSeparateHostsAndTheMacTableShowsThem)
{
    EXPECT_EQ(Run("reach a 10.0.0.2\n"
                  "ctl port 0:2 vlan 100; reach a 10.0.0.2\n"
                  "ctl port 0:1 vlan 100; reach a 10.0.0.2; reach a 10.0.0.3\n"
                  "ctl port 0:1 vlan 1; ctl port 0:2 vlan 1; reach a 10.0.0.2\n"),
              "yes\nno\nyes\nno\nyes\n");
}

TEST_F(Traffic, GroupsSeparateHostsFromEachOtherButNotFromTheSoc)
{
    EXPECT_EQ(Run("ctl port 0:1 group 5 --unlock; ctl port 0:2 group 6 --unlock\n"
                  "reach a 10.0.0.2; reach a 10.0.0.100; reach b 10.0.0.100\n"
                  "ctl port 0:2 group 5 --unlock; reach a 10.0.0.2; reach c 10.0.0.1\n"),
              "no\nyes\nyes\nyes\nno\n");
}

TEST_F(Traffic, AnEgressPortShowsTheTagOnlyWhenItIsTold)
{
    Run("hear b; hear c\n"
        "ctl port 0:1 pcp 5; ctl port 0:2 tagging 1\n"
        "send a " +
        Frame(kAll, kFromA) + "\nheard b; heard c\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, kFromA, "8100a001"))));
    EXPECT_THAT(Frames("c"), ElementsAre(FromHex(Frame(kAll, kFromA))));
}

TEST_F(Traffic, TheSocSeesOtherVlansTagged)
{
    Run("ctl port 0:1 vlan 100; ctl port 0:1 pcp 3\nhear soc\n"
        "send a " +
        Frame(kAll, kFromA) + "; send b " + Frame(kAll, kFromB) + "\nheard soc\n");
    EXPECT_THAT(Frames("soc"), ElementsAre(FromHex(Frame(kAll, kFromA, "81006064")),
                                           FromHex(Frame(kAll, kFromB))));
}

TEST_F(Traffic, ProviderBridgingAddsAServiceTagToACustomersTag)
{
    Run("ctl bridge-mode 0 on 0x88a8; ctl port 0:2 tagging 1\n"
        "hear b; hear c; hear soc\n"
        "send a " +
        Frame(kAll, kFromA, "8100600a") + "; send a " + Frame(kAll, kFromA, "88a8600a") +
        "\nheard b; heard c; heard soc\n");
    const std::vector<Octets> tagged = {FromHex(Frame(kAll, kFromA, "88a800018100600a")),
                                        FromHex(Frame(kAll, kFromA, "88a8000188a8600a"))};
    EXPECT_EQ(Frames("b"), tagged);
    EXPECT_EQ(Frames("soc"), tagged);
    EXPECT_THAT(Frames("c"), ElementsAre(FromHex(Frame(kAll, kFromA, "8100600a")),
                                         FromHex(Frame(kAll, kFromA, "88a8600a"))));
}

TEST_F(Traffic, TheMacTableHasTheStationsThatSpoke)
{
    Run("reach a 10.0.0.2; orblinkctl mac 0 --json >$S/mac\n");
    std::set<std::string> seen;
    const auto table = Json("mac");
    for (const auto& entry : table["entries"])
        seen.insert(entry["mac"].get<std::string>() + " " + entry["port"].dump());
    EXPECT_THAT(seen, ElementsAre("02:00:00:00:00:01 1", "02:00:00:00:00:02 2"));
}

TEST_F(Traffic, OfThreeHundredStationsTheTableCopyHolds256AndSaysThatThereAreMore)
{
    Run("hear b\n"
        "on a mausezahn lan1 -q -c 300 -a rand -b bcast -p 60 'aa:bb:cc:dd' >/dev/null 2>&1\n"
        "heard b\n"
        "orblinkctl mac 0 --json >$S/mac; orblinkctl mac 0 table --json >$S/table\n");
    std::set<std::string> spoke;
    for (const Octets& frame : Frames("b", true))
        spoke.insert(Text({frame.begin() + 6, frame.begin() + 12}));
    std::erase_if(spoke, [](const std::string& mac) {
        return (std::stoul(mac.substr(0, 2), nullptr, 16) & 1) != 0;
    });
    EXPECT_GT(spoke.size(), 256u);
    EXPECT_EQ(Addresses(Json("mac")), spoke);
    EXPECT_EQ(Json("table")["entries"].size(), 256u);
    EXPECT_EQ(Json("table")["more"], true);
}

TEST_F(Traffic, SteersStationsIntoAVlanByAMaskedAddress)
{
    const std::string steered = "0200000000f1";
    Run("ctl mac-vlan add 0:1 02:00:00:00:00:f0 200 --mask 0xffe; ctl port 0:2 vlan 200\n"
        "hear b; hear c\n"
        "send a " +
        Frame(kAll, steered) + "; send a " + Frame(kAll, kFromA) + "\nheard b; heard c\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, steered))));
    EXPECT_THAT(Frames("c"), ElementsAre(FromHex(Frame(kAll, kFromA))));
}

TEST_F(Traffic, TheMirrorSeesWhatTheMirroredHostSendsAndHears)
{
    Run("ctl port 0:4 vlan 400; ctl port 0:1 mirror 4\n"
        "hear a inout; hear d; on b ping -c 3 -i 0.2 10.0.0.1 >/dev/null; heard d; heard a\n");
    std::vector<Octets> source = Frames("a", true);
    std::vector<Octets> copy = Frames("d", true);
    for (auto* frames : {&source, &copy})
        for (Octets& frame : *frames)
            frame.resize(std::max<size_t>(frame.size(), 60));
    EXPECT_GE(source.size(), 8u);
    std::ranges::sort(source);
    std::ranges::sort(copy);
    EXPECT_EQ(copy, source);
}

TEST_F(Traffic, MulticastGoesToTheHostsThatHaveJoined)
{
    Run("ctl igmp 0 on; send d " + kIgmpQuery +
        "; hear b; hear c\n"
        "orblink-vboard exec b -- socat -u "
        "UDP4-RECVFROM:5000,ip-add-membership=239.1.1.1:10.0.0.2 CREATE:$S/got & pid=$!\n"
        "sleep 10\n"
        "echo news | on a socat -u - UDP4-DATAGRAM:239.1.1.1:5000,ip-multicast-if=10.0.0.1\n"
        "echo else | on a socat -u - UDP4-DATAGRAM:239.2.2.2:5000,ip-multicast-if=10.0.0.1\n"
        "wait $pid; heard b; heard c; cat $S/got\n");
    const auto groupFrames = [&](const std::string& host) {
        unsigned count = 0;
        for (const Octets& frame : Frames(host, true))
            count += frame[0] == 1 && frame[12] == 8 && frame[23] == 17 ? 1 : 0;
        return count;
    };
    EXPECT_EQ(groupFrames("b"), 1u);
    EXPECT_EQ(groupFrames("c"), 0u);
}

TEST_F(Traffic, MulticastOverIpv6GoesToTheHostsThatHaveJoined)
{
    EXPECT_EQ(Run("for h in a b c; do i=$(interface_of $h)\n"
                  "on $h sh -c \"echo 0 >/proc/sys/net/ipv6/conf/$i/disable_ipv6\"\n"
                  "on $h ip -6 address add 2001:db8::$h/64 dev $i nodad; done\n"
                  "ctl igmp 0 on; send d " +
                  kMldQuery +
                  "; hear b; hear c\n"
                  "orblink-vboard exec b -- socat -u "
                  "'UDP6-RECVFROM:5000,ipv6-join-group=[ff15::1]:lan2' CREATE:$S/got & pid=$!\n"
                  "until on b ip maddr show lan2 | grep -q ff15::1; do sleep 0.05; done; sleep 10\n"
                  "echo news | on a socat -u - 'UDP6-DATAGRAM:[ff15::1]:5000'\n"
                  "echo else | on a socat -u - 'UDP6-DATAGRAM:[ff15::2]:5000'\n"
                  "wait $pid; heard b; heard c; cat $S/got\n"),
              "news\n");
    const auto groupFrames = [&](const std::string& host) {
        unsigned count = 0;
        for (const Octets& frame : Frames(host, true))
            count += frame[0] == 0x33 && frame[20] == 17 ? 1 : 0;
        return count;
    };
    EXPECT_EQ(groupFrames("b"), 1u);
    EXPECT_EQ(groupFrames("c"), 0u);
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

TEST_F(Traffic, ADisabledPortIsSilentUntilItIsEnabled)
{
    EXPECT_EQ(Run("reach a 10.0.0.2; ctl port 0:2 disable; reach a 10.0.0.2\n"
                  "ctl port 0:2 enable\n"
                  "until orblinkctl port 0:2 link | grep -q yes; do sleep 0.05; done\n"
                  "reach a 10.0.0.2\n"),
              "yes\nno\nyes\n");
}

TEST_F(Traffic, TheLinkFollowsTheCableAndTheHostsInterface)
{
    EXPECT_EQ(Run("link() { orblinkctl port 0:1 link | awk 'END { print $3 }'; }\n"
                  "link; orblink-vboard control link sw0:1 down; link\n"
                  "orblink-vboard control link sw0:1 up; link\n"
                  "on a ip link set lan1 down; link; on a ip link set lan1 up; link\n"),
              "yes\nno\nyes\nno\nyes\n");
}

TEST_F(Traffic, RestoreBringsTheForwardingBack)
{
    EXPECT_EQ(Run("ctl port 0:1 vlan 100; ctl port 0:2 vlan 100; ctl port 0:2 tagging 1\n"
                  "ctl mac-vlan add 0:3 02:00:00:00:00:03 100\n"
                  "reach a 10.0.0.3; reach a 10.0.0.100\n"
                  "ctl down 0; reach a 10.0.0.3; ctl up 0 --restore\n"
                  "until orblinkctl port 0:3 link | grep -q yes; do sleep 0.05; done\n"
                  "reach a 10.0.0.3; reach a 10.0.0.100\n"
                  "hear b; send a " +
                  Frame(kAll, kFromA) + "; heard b\n"),
              "yes\nno\nno\nyes\nno\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, kFromA, "81000064"))));
}

TEST_F(Traffic, ABulkTransferArrivesAsItWasSent)
{
    EXPECT_EQ(Run("head -c 8000000 /dev/urandom >$S/sent\n"
                  "orblink-vboard exec b -- socat -u TCP4-LISTEN:5000 CREATE:$S/received & pid=$!\n"
                  "until on b ss -ltn | grep -q 5000; do sleep 0.05; done\n"
                  "on a socat -u OPEN:$S/sent TCP4:10.0.0.2:5000; wait $pid\n"
                  "cmp $S/sent $S/received && echo same\n"),
              "same\n");
}

TEST_F(Traffic, AThroughputMeasurementRuns)
{
    Run("orblink-vboard exec b -- iperf3 -s -1 >/dev/null & pid=$!\n"
        "until on b ss -ltn | grep -q 5201; do sleep 0.05; done\n"
        "on a iperf3 -c 10.0.0.2 -t 1 --json >$S/iperf; wait $pid\n");
    EXPECT_GT(Json("iperf")["end"]["sum_received"]["bytes"].get<uint64_t>(), 1u << 20);
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

TEST_F(Traffic, AnAddressAgesOnTheTimeOfTheBoard)
{
    // The last step is 4800 s, the first one 15 s: here 240 s and 0.75 s.
    EXPECT_EQ(Run("ctl aging 0 5; reach a 10.0.0.2; sleep 20; orblinkctl mac 0 --json >$S/early\n"
                  "ctl aging 0 1; sleep 20; orblinkctl mac 0 --json >$S/late\n"),
              "yes\n");
    EXPECT_EQ(Addresses(Json("early")).size(), 2u);
    EXPECT_EQ(Addresses(Json("late")), std::set<std::string>{});
}
