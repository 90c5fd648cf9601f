// Every counter of a port, and what makes it count: the table of the manual.
#include <fstream>
#include <iterator>
#include <set>

#include "tests/virtual_board/cables/traffic.h"

using namespace traffic;

namespace {

const std::string kEverybody = "ffffffffffff";
const std::string kSource = "020000000001";
const std::string kStation = "020000000002";

struct Step {
    std::string script;
    std::set<std::string> received;  // counters of port 1 that it moves
    std::set<std::string> sent;      // and of port 2
};

std::string SendA(const std::string& frame, int count = 1)
{
    return "send a " + frame + " " + std::to_string(count) + "\n";
}

std::string OfLength(size_t length, const std::string& to = kEverybody)
{
    return Frame(to, kSource, "", length - 18);
}

// With a cable that does something to the frames.
std::string Damaged(const std::string& how, const std::string& frame)
{
    return "cable " + how + " 100%\n" + SendA(frame) + "cable\n";
}

const std::vector<Step> kSteps = {
    {SendA(OfLength(64)),
     {"etherStatsOctets", "etherStatsPkts", "etherStatsBroadcastPkts", "etherStatsPkts64Octets",
      "aFramesReceivedOK", "aOctetsReceivedOK"},
     {"aFramesTransmittedOK", "aOctetsTransmittedOK", "aBroadcastFramesXmittedOK"}},
    {SendA(OfLength(64, "01005e010203")),
     {"etherStatsMulticastPkts"},
     {"aMulticastFramesXmittedOK"}},
    {SendA(OfLength(100)) + SendA(OfLength(200)) + SendA(OfLength(400)) + SendA(OfLength(800)) +
         SendA(OfLength(1400)),
     {"etherStatsPkts65to127Octets", "etherStatsPkts128to255Octets", "etherStatsPkts256to511Octets",
      "etherStatsPkts512to1023Octets", "etherStatsPkts1024to1518Octets"},
     {}},
    {"on a ip link set lan1 mtu 1600\n" + SendA(OfLength(1600)),
     {"etherStatsPkts1519toMaxOctets"},
     {}},
    {Damaged("--fcs-errors", OfLength(64)), {"etherStatsCRCAlignErrors"}, {}},
    {Damaged("--undersize", OfLength(200)), {"etherStatsUndersizePkts"}, {}},
    {Damaged("--fragments", OfLength(200)), {"etherStatsFragments"}, {}},
    {"ctl mtu 0 1000\n" + SendA(OfLength(1400)),
     {"etherStatsOversizePkts", "dot1dBasePortMtuExceededDiscards"},
     {}},
    {Damaged("--fcs-errors", OfLength(1400)) + "ctl mtu 0 2000\n", {"etherStatsJabbers"}, {}},
    {"ctl port 0:1 speed 10 half; linked 1; cable --collisions 50%\n" + SendA(OfLength(64), 20) +
         "cable; ctl port 0:1 speed auto; linked 1\n",
     {"etherStatsCollisions"},
     {}},
    {SendA("0180c2000001" + kSource + "88080001ffff" + std::string(84, '0')),
     {"aPAUSEMACCtrlFramesReceived"},
     {}},
    {SendA("ffffffffffff0100000000010800" + std::string(92, '0')), {"dot1dTpPortInDiscards"}, {}},
    {SendA(Frame(kEverybody, kSource, "81000005")), {"dot1qTpVlanPortInDiscards"}, {}},
    {"reach a 10.0.0.2 >/dev/null; ctl port 0:2 speed 10 full; linked 2\n"
     "ctl qos flow-control 0:1 6 1\n" +
         SendA(OfLength(1400, kStation), 1000),
     {"aPAUSEMACCtrlFramesTransmitted"},
     {}},
};

std::string Script()
{
    std::string script =
        "cable() { orblink-vboard control wire sw0:1 \"$@\"; }\n"
        "linked() { until orblinkctl port 0:$1 link | grep -q yes; do sleep 0.05; done; }\n"
        "look() { orblink-vboard control --json state sw0 >$S/counters$1; }\nlook 0\n";
    for (size_t i = 0; i < kSteps.size(); ++i)
        script += kSteps[i].script + "look " + std::to_string(i + 1) + "\n";
    return script;
}

}  // namespace

class Counting : public Traffic {
protected:
    nlohmann::json Counters(size_t step, unsigned port)
    {
        return Json("counters" +
                    std::to_string(step))["devices"]["sw0"]["state"]["ports"][port]["counters"];
    }
    void ExpectMore(size_t step, unsigned port, const std::set<std::string>& names)
    {
        const auto before = Counters(step, port);
        const auto after = Counters(step + 1, port);
        for (const std::string& name : names)
            EXPECT_GT(after[name].get<uint64_t>(), before[name].get<uint64_t>())
                << name << " at port " << port << " after\n"
                << kSteps[step].script.substr(0, 200);
    }
};

TEST_F(Counting, EveryCounterCanBeSeenCounting)
{
    Run(Script());
    // What fills 1 MiB of packet memory depends on how fast this machine sends; the tests of the
    // queues do it without one.
    std::set<std::string> seen = {"etherStatsDropEvents", "ifOutDiscards"};
    for (size_t i = 0; i < kSteps.size(); ++i) {
        ExpectMore(i, 1, kSteps[i].received);
        ExpectMore(i, 2, kSteps[i].sent);
        seen.insert(kSteps[i].received.begin(), kSteps[i].received.end());
        seen.insert(kSteps[i].sent.begin(), kSteps[i].sent.end());
    }
    std::ifstream file(ORBLINK_MANUAL);
    const std::string manual{std::istreambuf_iterator<char>(file), {}};
    const auto counters = Counters(0, 1);
    for (const auto& [name, value] : counters.items()) {
        EXPECT_TRUE(seen.contains(name)) << name << " is moved by no step";
        EXPECT_NE(manual.find("`" + name + "`"), std::string::npos) << name;
    }
}
