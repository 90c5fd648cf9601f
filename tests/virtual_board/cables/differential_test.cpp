// The same frames through the virtual switch and through a bridge of Linux.
#include <array>
#include <map>

#include "tests/virtual_board/cables/traffic.h"

using namespace traffic;

namespace {

const std::string kHosts = "abcd";

struct Sample {
    std::string name;
    char from;  // one of the hosts
    std::string destination;
    std::string source;
    std::string tag;       // of 802.1Q; empty: none
    const char* accepted;  // why the two differ; null: they do not
};

const std::string kA = "020000000001";
const std::string kB = "020000000002";

// From a bridge without VLAN filtering. Not every kernel has one with it, where these two are no
// differences.
constexpr const char* kStrips = "the switch takes the tag off on a port that is untagged";
constexpr const char* kFilters = "the switch takes only the VLANs of the port";

const Sample kSamples[] = {
    {"to a station that nobody knows", 'a', "020000000099", kA, "", nullptr},
    {"to all", 'c', "ffffffffffff", "020000000003", "", nullptr},
    {"to a station that has spoken", 'b', kA, kB, "", nullptr},
    {"back to the one that answered", 'a', kB, kA, "", nullptr},
    {"to the port that it comes from", 'a', kA, "020000000011", "", nullptr},
    {"from a group", 'a', "ffffffffffff", "010000000001", "", nullptr},
    {"from nobody", 'a', "ffffffffffff", "000000000000", "",
     "the switch does not learn the address 0, and forwards"},
    {"to a group", 'a', "01005e010203", kA, "", nullptr},
    {"to the spanning tree", 'a', "0180c2000000", kA, "",
     "a bridge of Linux without a spanning tree forwards it; here it is for the CPU"},
    {"a PAUSE frame's address", 'a', "0180c2000001", kA, "", nullptr},
    {"to slow protocols", 'a', "0180c2000002", kA, "", nullptr},
    {"to LLDP", 'a', "0180c200000e", kA, "", nullptr},
    {"above the reserved addresses", 'a', "0180c2000010", kA, "", nullptr},
    {"tagged with the port's VLAN", 'a', "ffffffffffff", kA, "81000001", kStrips},
    {"tagged with a priority only", 'a', "ffffffffffff", kA, "8100e000", kStrips},
    {"tagged with another VLAN", 'a', "ffffffffffff", kA, "81000005", kFilters},
    {"tagged with the reserved VLAN", 'a', "ffffffffffff", kA, "81000fff", kFilters},
};

const char* Accepted(const Sample& sample, bool filtering)
{
    const bool ofVlans = sample.accepted == kStrips || sample.accepted == kFilters;
    return filtering && ofVlans ? nullptr : sample.accepted;
}

// Its number follows the type; long enough not to be padded.
std::string Hex(size_t number)
{
    const Sample& sample = kSamples[number];
    char marker[8];
    snprintf(marker, sizeof marker, "%02zx", number);
    return sample.destination + sample.source + sample.tag + "88b5" + marker +
           std::string(120, '0');
}

}  // namespace

class Differential : public Traffic {
protected:
    // By number of the sample: who heard it, and how.
    using Heard = std::map<size_t, std::map<char, Octets>>;

    void CompareWithBridge(bool filtering);
    Heard HeardBy(const std::string& prefix)
    {
        Heard heard;
        for (const char host : kHosts) {
            for (const Octets& frame : Frames(prefix + host, false)) {
                const bool tagged = frame[12] != 0x88;
                heard[frame[tagged ? 18 : 14]][host] = frame;
            }
        }
        return heard;
    }
};

void Differential::CompareWithBridge(bool filtering)
{
    const std::string options = filtering ? "vlan_filtering 1" : "";
    std::string sends;
    for (size_t i = 0; i < std::size(kSamples); ++i)
        sends += std::string("give ") + kSamples[i].from + " " + Hex(i) + "\n";
    const std::string output = Run(
        "cat >$S/bridge.sh <<'END'\n"
        "set -e\n"
        "ip link add br0 type bridge mcast_snooping 0 " +
        options +
        " || { echo none; exit 0; }\n"
        "for h in a b c d; do\n"
        "    ip link add name host$h type veth peer name bridge$h\n"
        "    for i in host$h bridge$h; do echo 1 >/proc/sys/net/ipv6/conf/$i/disable_ipv6; done\n"
        "    ip link set bridge$h master br0 up; ip link set host$h up\n"
        "done\n"
        "ip link set br0 up\n"
        "for h in a b c d; do\n"
        "    until bridge link show dev bridge$h | grep -q forwarding; do sleep 0.05; done\n"
        "    tcpdump -i host$h -Z \"$(id -un)\" --immediate-mode -s 2048 -Q in -U -n "
        "-w $S/bridge$h.pcap 2>$S/bridge$h.log & pids=\"$pids $!\"\n"
        "    until grep -q 'listening on' $S/bridge$h.log; do sleep 0.05; done\n"
        "done\n"
        "give() { mausezahn host$1 -q -c 1 $(echo $2 | sed 's/../&:/g; s/:$//') >/dev/null 2>&1; "
        "}\n" +
        sends +
        "sleep 10; kill $pids; wait $pids || true\n"
        "END\n"
        "S=$S unshare -n sh $S/bridge.sh\n"
        "for h in a b c d; do hear $h; done\n"
        "give() { send $1 $2; }\n" +
        sends + "for h in a b c d; do heard $h; done\n");
    if (output == "none\n")
        GTEST_SKIP() << "this machine's kernel has no such bridges";
    Heard linux = HeardBy("bridge");
    Heard board = HeardBy("");
    EXPECT_EQ(linux[1].size(), 3u) << "what goes to all reaches all";
    for (size_t i = 0; i < std::size(kSamples); ++i) {
        const char* const accepted = Accepted(kSamples[i], filtering);
        if (accepted == nullptr)
            EXPECT_EQ(board[i], linux[i]) << kSamples[i].name;
        else
            EXPECT_NE(board[i], linux[i]) << kSamples[i].name << ": " << accepted;
    }
}

TEST_F(Differential, TheSwitchDoesWhatABridgeOfLinuxDoes)
{
    CompareWithBridge(false);
}

TEST_F(Differential, TheSwitchDoesWhatABridgeOfLinuxThatFiltersVlansDoes)
{
    CompareWithBridge(true);
}
