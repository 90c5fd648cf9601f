// Hosts that leave checksums and the cutting of TCP packets to their interfaces.
#include "tests/virtual_board/cables/traffic.h"

using namespace traffic;

namespace {

constexpr uint64_t kOctets = 2'000'000;

// A transfer from a to b, of which what b hears is captured.
std::string Transfer(const std::string& address, const std::string& before = "")
{
    return "head -c " + std::to_string(kOctets) + " /dev/urandom >$S/sent; rm -f $S/received\n" +
           before +
           "longest() {\n"
           "    tcpdump -r $1 -e -n tcp 2>/dev/null | awk 'match($0, /length [0-9]+:/) {\n"
           "        n = substr($0, RSTART + 7) + 0; if (n > m) m = n }\n"
           "        END { print (m > 1514 ? \"longer than 1514\" : m) }'\n"
           "}\n"
           "orblink-vboard exec b -- socat -u TCP4-LISTEN:5000 CREATE:$S/received & pid=$!\n"
           "until on b ss -ltn | grep -q 5000; do sleep 0.05; done\n"
           "on a socat -u OPEN:$S/sent TCP4:" +
           address +
           ":5000; wait $pid\n"
           "cmp $S/sent $S/received && echo same\n";
}

}  // namespace

class Offloading : public Traffic {
protected:
    nlohmann::json Counters(unsigned port)
    {
        return Json("counters")["devices"]["sw0"]["state"]["ports"][port]["counters"];
    }
    const std::string look = "orblink-vboard control --json state sw0 >$S/counters\n";
};

TEST_F(Offloading, PacketsGoThroughWholeAndCountAsTheirFrames)
{
    EXPECT_EQ(Run(Transfer("10.0.0.2", "hear b\n") + look + "heard b\nlongest $S/b.pcap\n"),
              "same\nlonger than 1514\n");
    const auto in = Counters(1);
    const auto out = Counters(2);
    // With 1448 octets of data in each frame, whatever packets they are part of.
    EXPECT_GE(in["aFramesReceivedOK"].get<uint64_t>(), kOctets / 1448);
    EXPECT_GE(out["aFramesTransmittedOK"].get<uint64_t>(), kOctets / 1448);
    EXPECT_LE(out["aFramesTransmittedOK"].get<uint64_t>(), kOctets / 1448 + 500);
    EXPECT_GE(in["etherStatsPkts1024to1518Octets"].get<uint64_t>(), kOctets / 1448 * 9 / 10);
    EXPECT_EQ(in["etherStatsPkts1519toMaxOctets"], 0);
    EXPECT_EQ(in["dot1dBasePortMtuExceededDiscards"], 0);
}

TEST_F(Offloading, PacketsKeepTheirWayThroughVlanTags)
{
    const std::string vlan =
        "for h in a b; do i=$(interface_of $h); n=${i#lan}\n"
        "    on $h ip link add link $i name v$i type vlan id 7 2>/dev/null || { echo none; exit 0; "
        "}\n"
        "    on $h ip address add 10.7.0.$n/24 dev v$i; on $h ip link set v$i up\n"
        "    ctl port 0:$n vlan 7; ctl port 0:$n tagging 1\n"
        "done\n";
    const std::string output = Run(Transfer("10.7.0.2", vlan));
    if (output == "none\n")
        GTEST_SKIP() << "no VLAN interfaces here";
    EXPECT_EQ(output, "same\n");
}

TEST_F(Offloading, ACaptureShowsFrames)
{
    EXPECT_EQ(Run("orblink-vboard control capture sw0:2 -w $S/port.pcapng --count 100 & look=$!\n"
                  "until test -s $S/port.pcapng; do sleep 0.05; done\n" +
                  Transfer("10.0.0.2") + "wait $look; longest $S/port.pcapng\n"),
              "same\n1514\n");
}

TEST_F(Offloading, ABadCableShowsFrames)
{
    EXPECT_EQ(Run("orblink-vboard control wire sw0:1 --delay 1ms\n" +
                  Transfer("10.0.0.2", "hear b\n") + "heard b; longest $S/b.pcap\n"),
              "same\n1514\n");
}

TEST_F(Offloading, AMirrorShowsFrames)
{
    EXPECT_EQ(Run("ctl port 0:1 mirror 3; hear c\n" + Transfer("10.0.0.2") +
                  "heard c; longest $S/c.pcap\n"),
              "same\n1514\n");
    EXPECT_GE(Frames("c", true).size(), kOctets / 1448);
}
