// What the settings of the library do to traffic between hosts, whatever switches it.
#include <algorithm>
#include <cstdlib>
#include <set>

#include "tests/support/kernel_parts.h"
#include "tests/virtual_board/cables/traffic.h"

using namespace traffic;
using ::testing::ElementsAre;

namespace {

const std::string kFromB = "020000000002";

// General queries, from a router behind port 4.
const std::string kIgmpQuery =
    "01005e0000010200000000040800460000200000000001023ad30a000004e000"
    "0001940400001101eefe00000000";
const std::string kMldQuery =
    "33330000000102000000000486dd6000000000200001fe800000000000000000"
    "000000000004ff0200000000000000000000000000013a000502000001008200"
    "7fc00064000000000000000000000000000000000000";

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

// The parameter: whether it is the kernel's own switch.
class Forwarding : public Traffic, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override
    {
        if (GetParam() && !support::KernelHasCables())
            GTEST_SKIP() << "network namespaces or veth interfaces are not allowed here";
        if (GetParam())
            UseLinux();
        Traffic::SetUp();
    }
};

#define SKIP_WITHOUT_VLANS()                          \
    if (GetParam() && !support::KernelFiltersVlans()) \
    GTEST_SKIP() << "this kernel's bridge has no VLAN filtering"
#define SKIP_WITHOUT_FILTERS()                      \
    if (GetParam() && !support::KernelHasFilters()) \
    GTEST_SKIP() << "this kernel lacks flower, matchall or the actions"

INSTANTIATE_TEST_SUITE_P(Switches, Forwarding, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "Linux" : "Virtual"; });

TEST_P(Forwarding, HostsAndTheSocReachEachOther)
{
    EXPECT_EQ(Run("reach a 10.0.0.2; reach b 10.0.0.3; reach c 10.0.0.100; reach soc 10.0.0.1"),
              "yes\nyes\nyes\nyes\n");
}

TEST_P(Forwarding, VlansSeparateHostsAndTheMacTableShowsThem)
{
    SKIP_WITHOUT_VLANS();
    EXPECT_EQ(Run("reach a 10.0.0.2\n"
                  "ctl port 0:2 vlan 100; reach a 10.0.0.2\n"
                  "ctl port 0:1 vlan 100; reach a 10.0.0.2; reach a 10.0.0.3\n"
                  "ctl port 0:1 vlan 1; ctl port 0:2 vlan 1; reach a 10.0.0.2\n"),
              "yes\nno\nyes\nno\nyes\n");
}

TEST_P(Forwarding, GroupsSeparateHostsFromEachOtherButNotFromTheSoc)
{
    SKIP_WITHOUT_FILTERS();
    EXPECT_EQ(Run("ctl port 0:1 group 5 --unlock; ctl port 0:2 group 6 --unlock\n"
                  "reach a 10.0.0.2; reach a 10.0.0.100; reach b 10.0.0.100\n"
                  "ctl port 0:2 group 5 --unlock; reach a 10.0.0.2; reach c 10.0.0.1\n"),
              "no\nyes\nyes\nyes\nno\n");
}

TEST_P(Forwarding, AnEgressPortShowsTheTagOnlyWhenItIsTold)
{
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    Run("hear b; hear c\n"
        "ctl port 0:1 pcp 5; ctl port 0:2 tagging 1\n"
        "send a " +
        Frame(kAll, kFromA) + "\nheard b; heard c\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, kFromA, "8100a001"))));
    EXPECT_THAT(Frames("c"), ElementsAre(FromHex(Frame(kAll, kFromA))));
}

TEST_P(Forwarding, TheSocSeesOtherVlansTagged)
{
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    Run("ctl port 0:1 vlan 100; ctl port 0:1 pcp 3\nhear soc\n"
        "send a " +
        Frame(kAll, kFromA) + "; send b " + Frame(kAll, kFromB) + "\nheard soc\n");
    EXPECT_THAT(Frames("soc"), ElementsAre(FromHex(Frame(kAll, kFromA, "81006064")),
                                           FromHex(Frame(kAll, kFromB))));
}

TEST_P(Forwarding, TheMacTableHasTheStationsThatSpoke)
{
    Run("reach a 10.0.0.2; orblinkctl mac 0 --json >$S/mac\n");
    std::set<std::string> seen;
    const auto table = Json("mac");
    for (const auto& entry : table["entries"])
        seen.insert(entry["mac"].get<std::string>() + " " + entry["port"].dump());
    EXPECT_THAT(seen, ElementsAre("02:00:00:00:00:01 1", "02:00:00:00:00:02 2"));
}

TEST_P(Forwarding, OfThreeHundredStationsTheTableCopyHolds256AndSaysThatThereAreMore)
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

TEST_P(Forwarding, SteersStationsIntoAVlanByAMaskedAddress)
{
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    const std::string steered = "0200000000f1";
    Run("ctl mac-vlan add 0:1 02:00:00:00:00:f0 200 --mask 0xffe; ctl port 0:2 vlan 200\n"
        "hear b; hear c\n"
        "send a " +
        Frame(kAll, steered) + "; send a " + Frame(kAll, kFromA) + "\nheard b; heard c\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, steered))));
    EXPECT_THAT(Frames("c"), ElementsAre(FromHex(Frame(kAll, kFromA))));
}

TEST_P(Forwarding, TheMirrorSeesWhatTheMirroredHostSendsAndHears)
{
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    // On a slow machine hosts ask again for the other's address before both captures have ended.
    Run("for h in a b; do i=$(interface_of $h)\n"
        "on $h sh -c \"echo 60 >/proc/sys/net/ipv4/neigh/$i/delay_first_probe_time\"; done\n"
        "ctl port 0:4 vlan 400; ctl port 0:1 mirror 4\n"
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

TEST_P(Forwarding, MulticastGoesToTheHostsThatHaveJoined)
{
    Run("ctl igmp 0 on; send d " + kIgmpQuery +
        "; hear b; hear c\n"
        "$(at b) socat -u "
        "UDP4-RECVFROM:5000,ip-add-membership=239.1.1.1:10.0.0.2 CREATE:$S/got & pid=$!\n"
        "sleep 10\n"
        "echo news | on a socat -u - UDP4-DATAGRAM:239.1.1.1:5000,ip-multicast-if=10.0.0.1\n"
        "echo else | on a socat -u - UDP4-DATAGRAM:239.2.2.2:5000,ip-multicast-if=10.0.0.1\n"
        "wait $pid; heard b; heard c; cat $S/got\n");
    const auto isForAGroup = [](const Octets& frame) {
        return frame[0] == 1 && frame[12] == 8 && frame[23] == 17;
    };
    EXPECT_EQ(Count("b", isForAGroup), 1u);
    EXPECT_EQ(Count("c", isForAGroup), 0u);
}

TEST_P(Forwarding, MulticastOverIpv6GoesToTheHostsThatHaveJoined)
{
    EXPECT_EQ(Run("for h in a b c; do i=$(interface_of $h)\n"
                  "on $h sh -c \"echo 0 >/proc/sys/net/ipv6/conf/$i/disable_ipv6\"\n"
                  "on $h ip -6 address add 2001:db8::$h/64 dev $i nodad; done\n"
                  "ctl igmp 0 on; send d " +
                  kMldQuery +
                  "; hear b; hear c\n"
                  "$(at b) socat -u "
                  "'UDP6-RECVFROM:5000,ipv6-join-group=[ff15::1]:lan2' CREATE:$S/got & pid=$!\n"
                  "until on b ip maddr show lan2 | grep -q ff15::1; do sleep 0.05; done; sleep 10\n"
                  "echo news | on a socat -u - 'UDP6-DATAGRAM:[ff15::1]:5000'\n"
                  "echo else | on a socat -u - 'UDP6-DATAGRAM:[ff15::2]:5000'\n"
                  "wait $pid; heard b; heard c; cat $S/got\n"),
              "news\n");
    const auto isForAGroup = [](const Octets& frame) {
        return frame[0] == 0x33 && frame[20] == 17;
    };
    EXPECT_EQ(Count("b", isForAGroup), 1u);
    EXPECT_EQ(Count("c", isForAGroup), 0u);
}

TEST_P(Forwarding, ADisabledPortIsSilentUntilItIsEnabled)
{
    EXPECT_EQ(Run("reach a 10.0.0.2; ctl port 0:2 disable; reach a 10.0.0.2\n"
                  "ctl port 0:2 enable\n"
                  "until orblinkctl port 0:2 link | grep -q yes; do sleep 0.05; done\n"
                  "reach a 10.0.0.2\n"),
              "yes\nno\nyes\n");
}

TEST_P(Forwarding, RestoreBringsTheForwardingBack)
{
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    EXPECT_EQ(Run("ctl port 0:1 vlan 100; ctl port 0:2 vlan 100; ctl port 0:2 tagging 1\n"
                  "ctl mac-vlan add 0:3 02:00:00:00:00:03 100\n"
                  "reach a 10.0.0.3; reach a 10.0.0.100\n"
                  "lose_settings; reach a 10.0.0.3; ctl up 0 --restore\n"
                  "until orblinkctl port 0:3 link | grep -q yes; do sleep 0.05; done\n"
                  "reach a 10.0.0.3; reach a 10.0.0.100\n"
                  "hear b; send a " +
                  Frame(kAll, kFromA) + "; heard b\n"),
              "yes\nno\nno\nyes\nno\n");
    EXPECT_THAT(Frames("b"), ElementsAre(FromHex(Frame(kAll, kFromA, "81000064"))));
}

TEST_P(Forwarding, ABulkTransferArrivesAsItWasSent)
{
    EXPECT_EQ(Run("head -c 8000000 /dev/urandom >$S/sent\n"
                  "$(at b) socat -u TCP4-LISTEN:5000 CREATE:$S/received & pid=$!\n"
                  "until on b ss -ltn | grep -q 5000; do sleep 0.05; done\n"
                  "on a socat -u OPEN:$S/sent TCP4:10.0.0.2:5000; wait $pid\n"
                  "cmp $S/sent $S/received && echo same\n"),
              "same\n");
}

TEST_P(Forwarding, AThroughputMeasurementRuns)
{
    Run("$(at b) iperf3 -s -1 >/dev/null & pid=$!\n"
        "until on b ss -ltn | grep -q 5201; do sleep 0.05; done\n"
        "on a iperf3 -c 10.0.0.2 -t 1 --json >$S/iperf; wait $pid\n");
    EXPECT_GT(Json("iperf")["end"]["sum_received"]["bytes"].get<uint64_t>(), 1u << 20);
}

TEST_P(Forwarding, AnAddressAgesOnTheTimeOfTheBoard)
{
    // The last step is 4800 s, the first one 15 s: on the virtual board 240 s and 0.75 s.
    if (GetParam() && !std::getenv("ORBLINK_LONG_TESTS"))
        GTEST_SKIP() << "takes 40 s, which ORBLINK_LONG_TESTS=1 allows";
    if (GetParam())
        timeScale = "1";
    EXPECT_EQ(Run("ctl aging 0 5; reach a 10.0.0.2; sleep 20; orblinkctl mac 0 --json >$S/early\n"
                  "ctl aging 0 1; sleep 20; orblinkctl mac 0 --json >$S/late\n"),
              "yes\n");
    EXPECT_EQ(Addresses(Json("early")).size(), 2u);
    EXPECT_EQ(Addresses(Json("late")), std::set<std::string>{});
}

TEST_P(Forwarding, ProviderBridgingAddsAServiceTagToACustomersTag)
{
    SKIP_WITHOUT_VLANS();
    ExpectAServiceTagBefore("8100600a");
}

TEST_P(Forwarding, FramesLongerThanTheMtuAreDropped)
{
    EXPECT_EQ(Run("ctl mtu 0 1000; reach a 10.0.0.2\n"
                  "on a ping -c 3 -i 0.2 -W 1 -s 1200 10.0.0.2 >/dev/null || echo dropped\n"
                  "on a ping -c 1 -W 1 -s 900 10.0.0.2 >/dev/null && echo passed\n"),
              "yes\ndropped\npassed\n");
}
