// What the switch says about a frame against what it does with it.
#include "virtual_board/datapath/trace.h"

#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;
using testing::Contains;

namespace {

class Tracing : public Lan {
protected:
    std::vector<std::string> Said(unsigned port, const Octets& frame)
    {
        std::vector<std::string> lines;
        for (const auto& [decision, registers] :
             vboard::datapath::Trace(engine, port, frame, bench.now))
            lines.push_back(decision + (registers.empty() ? "" : " (" + registers + ")"));
        return lines;
    }
    // The ports on which it says that the frame goes out, as Ports has them.
    std::string SaidPorts(unsigned port, const Octets& frame)
    {
        const std::string start = "goes out on port ";
        std::string text;
        for (const std::string& line : Said(port, frame))
            if (line.starts_with(start))
                text += (text.empty() ? "" : " ") + line.substr(start.size(), 1);
        return text;
    }
};

}  // namespace

TEST_F(Tracing, NamesTheRegistersOfEachDecision)
{
    WritePort(2, kVid, 5);
    WritePort(3, kCtrl, 0);
    WritePort(4, kGroup, 0x8001);
    WritePort(0, kTagging, 1);
    const auto said = Said(1, From(kA, kB));
    EXPECT_THAT(said, Contains("comes in on port 1 (PORT_STATUS 0x1102)"));
    EXPECT_THAT(said, Contains("no tag of 0x8100 (PB_CTRL 0x0111, PB_TPID 0x0112)"));
    EXPECT_THAT(said, Contains("VLAN 1 (PORT_VID 0x1103)"));
    EXPECT_THAT(said, Contains("priority 0, queue 1 (PORT_PCP 0x1104)"));
    EXPECT_THAT(said, Contains("to all ports: 0 1 2 3 4 5 6 7 (MAC table)"));
    EXPECT_THAT(said, Contains("not on port 2: not in its VLAN (PORT_VID 0x1203)"));
    EXPECT_THAT(said, Contains("not on port 3: no link, or in a test (PORT_STATUS 0x1302)"));
    EXPECT_THAT(said, Contains("not on port 4: isolated, or in another group (PORT_GROUP 0x1406)"));
    EXPECT_THAT(said, Contains("goes out on port 0, tagged (PORT_TAG 0x1005)"));
    EXPECT_THAT(said, Contains("goes out on port 5, untagged (PORT_TAG 0x1505)"));
}

TEST_F(Tracing, SaysWhyAFrameIsDropped)
{
    Write(kMtu, 1518);
    EXPECT_THAT(Said(1, From(kA, kB, Payload(1501))),
                Contains("dropped: 1519 octets are longer than the MTU of 1518 (MTU 0x0114)"));
    EXPECT_THAT(Said(1, From(kBroadcast, kB)), Contains("dropped: comes from a group"));
    EXPECT_THAT(Said(1, From(kA, kB, Tag(0, 9) + Payload())),
                Contains("dropped: port 1 is not in VLAN 9 (PORT_VID 0x1103)"));
    WritePort(1, kCtrl, 0);
    EXPECT_THAT(Said(1, From(kA, kB)),
                Contains("dropped: port 1 has no link (PORT_STATUS 0x1102)"));
}

TEST_F(Tracing, ChangesNothing)
{
    Write(kSnooping, 1);
    Said(1, From(kA, kB));
    EXPECT_EQ(Known(kA), "");
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 0u);
    EXPECT_TRUE(Drain().empty());
}

// Whatever the registers are, it says what happens then.
TEST_F(Tracing, SaysWhatHappens)
{
    uint32_t random = 1;
    const auto draw = [&](unsigned below) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % below;
    };
    const MacAddress destinations[] = {kB,
                                       kBroadcast,
                                       {0x01, 0x80, 0xC2, 0, 0, 0x0E},
                                       {0x01, 0x80, 0xC2, 0, 0, 1},
                                       {1, 0, 0x5E, 1, 2, 3}};
    for (unsigned round = 0; round < 300; ++round) {
        const unsigned port = draw(8);
        WritePort(1 + draw(7), kVid, static_cast<uint16_t>(1 + draw(2)));
        WritePort(draw(8), kCtrl, draw(8) != 0 ? 1 : 0);
        WritePort(draw(8), kTagging, draw(2) != 0 ? 1 : 0);
        WritePort(1 + draw(7), kGroup, draw(2) != 0 ? 0x8001 : 0);
        Write(kForwardCtrl, draw(2) != 0 ? 1 : 0);
        Write(kPbCtrl, draw(4) == 0 ? 1 : 0);
        const Octets rest = draw(2) != 0 ? Tag(draw(8), 1 + draw(2)) + Payload() : Payload();
        const Octets frame = From(Station(draw(4)), destinations[draw(5)], rest);
        const std::string said = SaidPorts(port, frame);
        EXPECT_EQ(said, Ports(port, frame)) << round;
    }
}

TEST_F(Lan, WhatIsLeftOfAFrameIsCountedAndDropped)
{
    const Octets rest(28, 2);
    bench.Wait(std::chrono::nanoseconds(1));
    engine.ReceiveBad(1, rest, bench.now, vboard::datapath::Damage::kShort);
    EXPECT_EQ(Counter(1, "etherStatsUndersizePkts"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsFragments"), 0u);
    engine.ReceiveBad(1, rest, bench.now, vboard::datapath::Damage::kFragment);
    EXPECT_EQ(Counter(1, "etherStatsUndersizePkts"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsFragments"), 1u);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(Counter(1, "etherStatsPkts"), 2u);
    EXPECT_EQ(Counter(1, "etherStatsOctets"), 64u);
    EXPECT_EQ(Counter(1, "etherStatsPkts64Octets"), 0u);
    EXPECT_EQ(Counter(1, "etherStatsCRCAlignErrors"), 0u);
}

TEST_F(Lan, AFrameWithAWrongCheckSequenceIsCountedAndDropped)
{
    const Octets good = From(kA, kB);
    bench.Wait(std::chrono::nanoseconds(1));
    engine.ReceiveBad(1, good, bench.now);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(Known(kA), "");
    EXPECT_EQ(Counter(1, "etherStatsCRCAlignErrors"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsPkts"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsPkts64Octets"), 1u);
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 0u);
    Write(kMtu, 1518);
    engine.ReceiveBad(1, From(kA, kB, Payload(1501)), bench.now);
    EXPECT_EQ(Counter(1, "etherStatsJabbers"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsCRCAlignErrors"), 1u);
}
