// Packets of which hosts leave the checksum, or the cutting into frames, to their interface.
#include "virtual_board/datapath/offload.h"

#include "tests/virtual_board/datapath/lan_bench.h"
#include "virtual_board/datapath/ip.h"

using namespace lan;
using testing::ElementsAre;
using testing::SizeIs;
using vboard::datapath::Bytes;
using vboard::datapath::Cutter;
using vboard::datapath::kLongestPacket;
using vboard::datapath::Offload;
using vboard::datapath::PutWord;
using vboard::datapath::Sum;
using vboard::datapath::Understand;
using vboard::datapath::Word;

namespace {

constexpr uint8_t kPush = 0x18;
constexpr unsigned kIp = 14;

struct Packet {
    Octets octets;
    Offload left;
};

// The sum of the pseudo header, as a host leaves it in the place of the checksum.
uint16_t PseudoSum(const Octets& octets, unsigned ip, unsigned tcp)
{
    const bool ipv6 = octets[ip] >> 4 == 6;
    const Bytes addresses = Bytes{octets}.subspan(ip + (ipv6 ? 8 : 12), ipv6 ? 32 : 8);
    return Sum(addresses, static_cast<uint32_t>(6 + octets.size() - tcp));
}

Octets TcpHeader(uint8_t flags)
{
    return Words({4000, 5000, 0x1234, 0xFFF0, 0, 0, 0x5000u | flags, 8192, 0, 0});
}

Octets Data(size_t size)
{
    Octets data;
    for (size_t i = 0; i < size; ++i)
        data.push_back(static_cast<uint8_t>(i * 7 + i / 256));
    return data;
}

Packet Finished(Octets octets, unsigned ip, unsigned tcp, size_t perFrame)
{
    PutWord(octets.data() + tcp + 16, PseudoSum(octets, ip, tcp));
    const auto left = Understand(octets, tcp, 16, perFrame);
    EXPECT_TRUE(left.has_value());
    return {octets, left.value_or(Offload{})};
}

// Data in TCP over IPv4 from A to B.
Packet Tcp4(size_t size, size_t perFrame, uint8_t flags = kPush, const Octets& tag = {})
{
    Octets ip = Words(
        {0x4500, static_cast<unsigned>(40 + size), 77, 0x4000, 0x4006, 0, 0x0A00, 1, 0x0A00, 2});
    PutWord(ip.data() + 10, static_cast<uint16_t>(~Sum(ip, 0)));
    const auto at = static_cast<unsigned>(kIp + tag.size());
    return Finished(From(kA, kB, tag + Words({0x0800}) + ip + TcpHeader(flags) + Data(size)), at,
                    at + 20, perFrame);
}

Packet Tcp6(size_t size, size_t perFrame)
{
    const Octets ip = Words({0x6000, 0,      static_cast<unsigned>(20 + size),
                             0x0640, 0x2001, 0xDB8,
                             0,      0,      0,
                             0,      0,      1,
                             0x2001, 0xDB8,  0,
                             0,      0,      0,
                             0,      2});
    return Finished(From(kA, kB, Words({0x86DD}) + ip + TcpHeader(kPush) + Data(size)), kIp,
                    kIp + 40, perFrame);
}

std::vector<Octets> Cut(const Packet& packet)
{
    Octets room(kLongestPacket);
    Cutter cutter{packet.octets, packet.left, room.data()};
    std::vector<Octets> frames;
    for (Bytes frame = cutter.Next(); !frame.empty(); frame = cutter.Next())
        frames.emplace_back(frame.begin(), frame.end());
    return frames;
}

// Of a frame that is complete: the sum over everything that its checksum covers.
uint16_t TcpSum(const Octets& frame, unsigned ip, unsigned tcp)
{
    return Sum(Bytes{frame}.subspan(tcp), PseudoSum(frame, ip, tcp));
}

class Offloading : public Lan {
protected:
    void SetUp() override { Hear(2, From(kB, kA)); }
    void Give(const Packet& packet)
    {
        bench.Wait(std::chrono::nanoseconds(1));
        engine.Receive(1, packet.octets, bench.now, packet.left);
    }
    std::vector<Octets> HearOn2(const Packet& packet)
    {
        Give(packet);
        return Drain()[2];
    }
};

// The far ends take whole packets.
class WholePackets : public Offloading {
protected:
    bool TakesPackets(unsigned port) const override { return port != 3; }
    void SendPacket(unsigned port, std::span<const iovec> pieces, const Offload& left) override
    {
        Send(port, pieces);
        packets.push_back({port, left});
    }
    struct Whole {
        unsigned port;
        Offload left;
    };
    std::vector<Whole> packets;
};

}  // namespace

TEST(Cutter, MakesFramesWhoseHeadersAndChecksumsAreRight)
{
    const auto frames = Cut(Tcp4(3500, 1448));
    ASSERT_THAT(frames, SizeIs(3));
    Octets data;
    for (unsigned i = 0; i < 3; ++i) {
        const Octets& frame = frames[i];
        EXPECT_EQ(Word(&frame[kIp + 2]), frame.size() - kIp) << "total length";
        EXPECT_EQ(Word(&frame[kIp + 4]), 77 + i) << "identification";
        EXPECT_EQ(Sum(Bytes{frame}.subspan(kIp, 20), 0), 0xFFFF);
        EXPECT_EQ(Word(&frame[kIp + 24]) << 16 | Word(&frame[kIp + 26]), 0x1234FFF0 + i * 1448);
        EXPECT_EQ(TcpSum(frame, kIp, kIp + 20), 0xFFFF);
        EXPECT_EQ(frame[kIp + 33], i == 2 ? 0x18 : 0x10) << "PUSH at the end only";
        data.insert(data.end(), frame.begin() + kIp + 40, frame.end());
    }
    EXPECT_EQ(data, Data(3500));
}

TEST(Cutter, KeepsTheFirstFramesWindowReductionAndTheLastOnesEnd)
{
    const auto frames = Cut(Tcp4(300, 100, 0x80 | 0x11));
    ASSERT_THAT(frames, SizeIs(3));
    EXPECT_EQ(frames[0][kIp + 33], 0x90);
    EXPECT_EQ(frames[1][kIp + 33], 0x10);
    EXPECT_EQ(frames[2][kIp + 33], 0x11);
}

TEST(Cutter, CutsIpv6AndTaggedPackets)
{
    const auto frames = Cut(Tcp6(2000, 1000));
    ASSERT_THAT(frames, SizeIs(2));
    for (const Octets& frame : frames) {
        EXPECT_EQ(Word(&frame[kIp + 4]), frame.size() - kIp - 40);
        EXPECT_EQ(TcpSum(frame, kIp, kIp + 40), 0xFFFF);
    }
    const auto tagged = Cut(Tcp4(2000, 1000, kPush, Tag(3, 5)));
    ASSERT_THAT(tagged, SizeIs(2));
    EXPECT_EQ(TcpSum(tagged[1], kIp + 4, kIp + 24), 0xFFFF);
}

TEST(Cutter, CompletesTheChecksumOfAPacketThatIsOneFrame)
{
    const auto frames = Cut(Tcp4(200, 0));
    ASSERT_THAT(frames, SizeIs(1));
    EXPECT_EQ(TcpSum(frames[0], kIp, kIp + 20), 0xFFFF);
}

TEST(Understanding, RefusesWhatDoesNotFitThePacket)
{
    const Octets good = Tcp4(2000, 1000).octets;
    EXPECT_TRUE(Understand(good, 34, 16, 1000));
    EXPECT_FALSE(Understand(good, good.size() - 17, 16, 0)) << "the checksum is outside";
    EXPECT_FALSE(Understand(good, 0, 16, 0));
    EXPECT_FALSE(Understand(good, 36, 16, 1000)) << "no TCP header there";
    EXPECT_FALSE(Understand(good, 34, 6, 1000)) << "the checksum is not that of TCP";
    EXPECT_FALSE(Understand(good, 34, 16, 47)) << "too little for a frame";
    Octets udp = good;
    udp[kIp + 9] = 17;
    EXPECT_FALSE(Understand(udp, 34, 16, 1000));
    Octets beyond = good;
    beyond[kIp + 32] = 0xF0;
    beyond.resize(kIp + 60);
    EXPECT_FALSE(Understand(beyond, 34, 16, 1000)) << "the header ends outside";
    Octets other = good;
    other[12] = 0x88;
    EXPECT_FALSE(Understand(other, 34, 16, 1000)) << "neither IPv4 nor IPv6";
}

TEST_F(Offloading, APortThatTakesFramesGetsThem)
{
    const Packet packet = Tcp4(10000, 1448);
    EXPECT_EQ(HearOn2(packet), Cut(packet));
}

TEST_F(WholePackets, APacketGoesThroughWholeAndCountsAsItsFrames)
{
    const Packet packet = Tcp4(10000, 1448);
    EXPECT_THAT(HearOn2(packet), ElementsAre(packet.octets));
    ASSERT_THAT(packets, SizeIs(1));
    EXPECT_EQ(packets[0].left.perFrame, 1448);
    EXPECT_EQ(Counter(1, "etherStatsPkts"), 7u);
    EXPECT_EQ(Counter(1, "etherStatsOctets"), 10000u + 7 * 58);
    EXPECT_EQ(Counter(1, "etherStatsPkts1024to1518Octets"), 7u);
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 7u);
    EXPECT_EQ(Counter(1, "aOctetsReceivedOK"), 10000u + 7 * 40);
    EXPECT_EQ(Counter(2, "aFramesTransmittedOK"), 7u);
    EXPECT_EQ(Counter(2, "aOctetsTransmittedOK"), 10000u + 7 * 40);
}

TEST_F(WholePackets, CountsNeitherMoreNorLessThanTheFramesOneByOne)
{
    const Packet packet = Tcp4(5010, 500);
    const auto before = bench.chip.State()["ports"];
    HearOn2(packet);
    const auto between = bench.chip.State()["ports"];
    for (const Octets& frame : Cut(packet))
        Give({frame, {}});
    EXPECT_THAT(Drain()[2], SizeIs(11));
    const auto after = bench.chip.State()["ports"];
    const auto of = [](const nlohmann::json& ports, unsigned port, const std::string& name) {
        return ports[port]["counters"][name].get<uint64_t>();
    };
    for (const unsigned port : {1u, 2u}) {
        for (const auto& [name, value] : before[port]["counters"].items())
            EXPECT_EQ(of(between, port, name) - of(before, port, name),
                      of(after, port, name) - of(between, port, name))
                << port << " " << name;
    }
}

TEST_F(WholePackets, ATagMovesWhatIsLeftToDo)
{
    WritePort(2, kTagging, 1);
    const Packet packet = Tcp4(4000, 1000);
    const Packet tagged = Tcp4(4000, 1000, kPush, Tag(0, 1));
    EXPECT_THAT(HearOn2(packet), ElementsAre(tagged.octets));
    ASSERT_THAT(packets, SizeIs(1));
    EXPECT_EQ(packets[0].left.sumFrom, tagged.left.sumFrom);
    EXPECT_EQ(packets[0].left.ip, tagged.left.ip);
    WritePort(2, kTagging, 0);
    EXPECT_THAT(HearOn2(tagged), ElementsAre(packet.octets));
    EXPECT_EQ(packets[1].left.sumAt, packet.left.sumAt);
    EXPECT_EQ(packets[1].left.data, packet.left.data);
}

TEST_F(WholePackets, AnIdentifierThatNoHostKnowsComesWithFrames)
{
    Write(kPbTpid, 0x9100);
    Write(kPbCtrl, 1);
    WritePort(2, kTagging, 1);
    EXPECT_THAT(HearOn2(Tcp4(4000, 1000)), SizeIs(4));
}

TEST_F(WholePackets, AreCutWhereAMirrorOrAWatcherLooks)
{
    const Packet packet = Tcp4(3000, 1000);
    WritePort(1, kMirror, 0x8003);
    Give(packet);
    auto heard = Drain();
    EXPECT_EQ(heard[3], Cut(packet)) << "what comes in";
    EXPECT_EQ(heard[2], Cut(packet));
    WritePort(1, kMirror, 0);
    WritePort(2, kMirror, 0x8003);
    Give(packet);
    heard = Drain();
    EXPECT_EQ(heard[3], Cut(packet)) << "what goes out";
    EXPECT_EQ(heard[2], Cut(packet));
}

TEST_F(WholePackets, AFloodedPacketIsCutOnlyWhereItMustBe)
{
    Packet packet = Tcp4(3000, 1000);
    packet.octets[5] ^= 0x40;  // a station that nobody knows
    Give(packet);
    const auto heard = Drain();
    EXPECT_THAT(heard.at(2), ElementsAre(packet.octets));
    EXPECT_EQ(heard.at(3), Cut(packet));
    EXPECT_EQ(Counter(3, "aFramesTransmittedOK"), 4u) << "one of them is how B was learnt";
}

TEST_F(WholePackets, TheMtuIsThatOfTheFrames)
{
    Write(kMtu, 1100);
    EXPECT_THAT(HearOn2(Tcp4(5000, 1000)), SizeIs(1));
    EXPECT_EQ(Counter(1, "dot1dBasePortMtuExceededDiscards"), 0u);
    EXPECT_THAT(HearOn2(Tcp4(5100, 1200)), ElementsAre(SizeIs(54 + 300)));
    EXPECT_EQ(Counter(1, "dot1dBasePortMtuExceededDiscards"), 4u);
    EXPECT_EQ(Counter(1, "etherStatsOversizePkts"), 4u);
}

TEST_F(WholePackets, TakeTheWireForAllTheirFrames)
{
    bench.Wait(std::chrono::milliseconds(1));
    const auto start = bench.now;
    Give(Tcp4(10000, 1000));
    Give(Tcp4(10, 0));
    EXPECT_THAT(sent, SizeIs(1));
    Drain();
    // Ten frames of 1054 octets, with check sequence, preamble and gap, at 1000 Mb/s.
    EXPECT_NEAR(static_cast<double>((bench.now - start).count()), 10 * (1054 + 24) * 8, 10);
}

TEST_F(WholePackets, TakeTheBuffersOfAllTheirFrames)
{
    Write(QueueRegister(5, 0, 6), 40);
    Give(Tcp4(60000, 1000));  // on the wire, 300 buffers free again
    for (unsigned i = 0; i < 13; ++i)
        Give(Tcp4(60000, 1000));
    EXPECT_EQ(Counter(2, "ifOutDiscards"), 0u);
    Give(Tcp4(60000, 1000));
    // 4096 less 40 reserved and 13 packets of 60 frames at 5 buffers leave room for 31 frames.
    EXPECT_EQ(Counter(2, "ifOutDiscards"), 60u - 31u);
    EXPECT_EQ(Counter(1, "etherStatsDropEvents"), 60u - 31u);
    Drain();
    bench.Wait(std::chrono::milliseconds(1));
    for (unsigned i = 0; i < 14; ++i)
        Give(Tcp4(60000, 1000));
    EXPECT_EQ(Counter(2, "ifOutDiscards"), 60u - 31u) << "all buffers came back";
}

TEST_F(WholePackets, ASlowPortSendsFrames)
{
    WritePort(2, kPhyCtrl, 3 | 8);
    Hear(2, From(kB, kA));
    EXPECT_THAT(HearOn2(Tcp4(60000, 1000)), SizeIs(60));
    EXPECT_THAT(HearOn2(Tcp4(5000, 1000)), SizeIs(1)) << "half a millisecond at 100 Mb/s";
}

TEST_F(WholePackets, EarlyDetectionAndFlowControlLookAtFrames)
{
    Write(kWredCtrl, 0x6401);
    EXPECT_THAT(HearOn2(Tcp4(5000, 1000)), SizeIs(5));
    Write(kWredCtrl, 0x6400);
    EXPECT_THAT(HearOn2(Tcp4(5000, 1000)), SizeIs(1));
    WritePort(1, kXoff, 4000);
    EXPECT_THAT(HearOn2(Tcp4(5000, 1000)), SizeIs(5));
}
