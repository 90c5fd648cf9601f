// Port groups, isolation, links, verification tests, the MTU, resets, counters and mirroring.
#include <cstdlib>
#include <new>

#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;

TEST_F(Lan, PortsReachTheirOwnGroupAndTheInternalPort)
{
    for (unsigned p : {1u, 2u})
        WritePort(p, kGroup, 0x8005);
    WritePort(3, kGroup, 0x8006);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2");
    EXPECT_EQ(Ports(3, From(kB, kBroadcast)), "0");
    EXPECT_EQ(Ports(4, From(kC, kBroadcast)), "0 5 6 7");
    EXPECT_EQ(Ports(0, From(kC, kBroadcast)), "1 2 3 4 5 6 7");
}

TEST_F(Lan, GroupZeroIsAGroup)
{
    WritePort(1, kGroup, 0x8000);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0");
}

TEST_F(Lan, IsolatedPortsReachTheInternalPortAndTheirGroupOnly)
{
    Write(kForwardCtrl, 1);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0");
    EXPECT_EQ(Ports(0, From(kB, kBroadcast)), "1 2 3 4 5 6 7");
    WritePort(1, kGroup, 0x8001);
    WritePort(2, kGroup, 0x8001);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2");
}

TEST_F(Lan, APortThatCannotBeReachedIsNotReachedByItsAddressEither)
{
    Hear(2, From(kB, kA));
    Write(kForwardCtrl, 1);
    EXPECT_EQ(Ports(1, From(kA, kB)), "");
    EXPECT_EQ(Counter(1, "dot1dTpPortInDiscards"), 1u);
}

TEST_F(Lan, ADisabledPortNeitherHearsNorSpeaks)
{
    Hear(2, From(kB, kBroadcast));
    WritePort(2, kCtrl, 0);
    EXPECT_EQ(Ports(2, From(kB, kBroadcast)), "");
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 3 4 5 6 7");
    EXPECT_EQ(Known(kB), "");
    WritePort(2, kCtrl, 1);
    EXPECT_EQ(Ports(2, From(kB, kBroadcast)), "0 1 3 4 5 6 7");
}

TEST_F(Lan, WithoutACableNothingIsReceivedOrCounted)
{
    bench.chip.SetLink(2, false, 1, true);
    EXPECT_EQ(Ports(2, From(kB, kBroadcast)), "");
    EXPECT_EQ(Counter(2, "etherStatsPkts"), 0u);
}

TEST_F(Lan, ASwitchedOffPartnerIsAMissingLink)
{
    bench.chip.SetPartnerPower(2, false);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 3 4 5 6 7");
    EXPECT_EQ(Read(PortRegister(2, 2)), 0u);
    bench.chip.SetPartnerPower(2, true);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2 3 4 5 6 7");
}

TEST_F(Lan, AVerificationTestTakesThePortOutOfForwarding)
{
    WritePort(2, kDvt, 1);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 3 4 5 6 7");
    EXPECT_EQ(Ports(2, From(kB, kBroadcast)), "");
    EXPECT_EQ(Counter(2, "etherStatsPkts"), 0u);
}

TEST_F(Lan, AFrameLongerThanTheMtuIsDroppedAndCounted)
{
    Write(kMtu, 1000);
    const size_t around = 6 + 6 + 2 + 4;
    EXPECT_EQ(Ports(1, From(kA, kBroadcast, Payload(1000 - around))), "0 2 3 4 5 6 7");
    EXPECT_EQ(Ports(1, From(kA, kBroadcast, Payload(1001 - around))), "");
    EXPECT_EQ(Counter(1, "etherStatsOversizePkts"), 1u);
    EXPECT_EQ(Counter(1, "dot1dBasePortMtuExceededDiscards"), 1u);
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsPkts"), 2u);
    EXPECT_EQ(Counter(1, "etherStatsOctets"), 2001u);
}

TEST_F(Lan, CarriesTheLongestFrame)
{
    Write(kMtu, 10240);
    const Octets frame = From(kA, kBroadcast, Payload(10240 - 18));
    WritePort(2, kTagging, 1);
    auto heard = Hear(1, frame);
    EXPECT_EQ(heard.at(3), std::vector<Octets>{frame});
    EXPECT_EQ(heard.at(2),
              std::vector<Octets>{From(kA, kBroadcast, Tag(0, 1) + Payload(10240 - 18))});
}

TEST_F(Lan, NothingMovesWhileTheChipBootsOrIsHeld)
{
    bench.chip.SetResetLine(true);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "");
    bench.chip.SetResetLine(false);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "");
    bench.Wait(ChipBench::kBoot);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2 3 4 5 6 7");
}

TEST_F(Lan, TheInternalPortIsDeafWhileItsReceivePathRestarts)
{
    ASSERT_TRUE(bench.WriteDirect(3, 2));
    EXPECT_EQ(Ports(0, From(kA, kBroadcast)), "");
    EXPECT_EQ(Ports(1, From(kB, kBroadcast)), "0 2 3 4 5 6 7");
    bench.Wait(std::chrono::microseconds(500));
    EXPECT_EQ(Ports(0, From(kA, kBroadcast)), "1 2 3 4 5 6 7");
}

TEST_F(Lan, ASoftResetBringsTheResetForwardingBack)
{
    WritePort(2, kVid, 100);
    Hear(1, From(kA, kBroadcast));
    ASSERT_TRUE(bench.WriteDirect(3, 1));
    bench.Wait(std::chrono::milliseconds(2));
    EXPECT_EQ(Ports(2, From(kB, kA)), "0 1 3 4 5 6 7");
}

TEST_F(Lan, TheInternalPortMayBeAnother)
{
    Bench other(5);
    other.WritePort(2, kVid, 100);
    EXPECT_EQ(other.Hear(2, From(kA, kBroadcast)).at(5),
              std::vector<Octets>{From(kA, kBroadcast, Tag(0, 100) + Payload())});
    EXPECT_EQ(other.Ports(0, From(kB, kBroadcast)), "1 3 4 5 6 7");
}

TEST_F(Lan, CountsWhatAPortReceives)
{
    const std::pair<size_t, const char*> sizes[] = {
        {64, "etherStatsPkts64Octets"},           {65, "etherStatsPkts65to127Octets"},
        {127, "etherStatsPkts65to127Octets"},     {128, "etherStatsPkts128to255Octets"},
        {255, "etherStatsPkts128to255Octets"},    {256, "etherStatsPkts256to511Octets"},
        {511, "etherStatsPkts256to511Octets"},    {512, "etherStatsPkts512to1023Octets"},
        {1023, "etherStatsPkts512to1023Octets"},  {1024, "etherStatsPkts1024to1518Octets"},
        {1518, "etherStatsPkts1024to1518Octets"}, {1519, "etherStatsPkts1519toMaxOctets"},
        {2000, "etherStatsPkts1519toMaxOctets"}};
    std::map<std::string, uint64_t> expected;
    uint64_t octets = 0;
    for (const auto& [size, counter] : sizes) {
        Hear(1, From(kA, kB, Payload(size - 18)));
        EXPECT_EQ(Counter(1, counter), ++expected[counter]) << size;
        octets += size;
    }
    EXPECT_EQ(Counter(1, "etherStatsOctets"), octets);
    EXPECT_EQ(Counter(1, "aOctetsReceivedOK"), octets - 18 * std::size(sizes));
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), std::size(sizes));
    EXPECT_EQ(Counter(2, "aFramesTransmittedOK"), std::size(sizes));
    EXPECT_EQ(Counter(2, "aOctetsTransmittedOK"), octets - 18 * std::size(sizes));
    EXPECT_EQ(Counter(2, "etherStatsPkts"), 0u);
}

TEST_F(Lan, CountsGroupFramesByKind)
{
    Hear(1, From(kA, kBroadcast));
    Hear(1, From(kA, {0x01, 0x00, 0x5E, 1, 1, 1}));
    Hear(1, From(kA, {0x01, 0x00, 0x5E, 1, 1, 1}));
    Hear(1, From(kA, kB));
    EXPECT_EQ(Counter(1, "etherStatsBroadcastPkts"), 1u);
    EXPECT_EQ(Counter(1, "etherStatsMulticastPkts"), 2u);
    EXPECT_EQ(Counter(2, "aBroadcastFramesXmittedOK"), 1u);
    EXPECT_EQ(Counter(2, "aMulticastFramesXmittedOK"), 2u);
    EXPECT_EQ(Counter(2, "aFramesTransmittedOK"), 4u);
}

TEST_F(Lan, MirrorsWhatAPortReceivesAsItCameIn)
{
    WritePort(1, kMirror, 0x8006);
    Hear(2, From(kB, kA));
    const Octets frame = From(kA, kB, Tag(3, 1) + Payload());
    auto heard = Hear(1, frame);
    EXPECT_EQ(heard.at(6), std::vector<Octets>{frame});
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kB)});
    EXPECT_EQ(heard.size(), 2u);
}

TEST_F(Lan, MirrorsWhatAPortSendsAsItGoesOut)
{
    WritePort(2, kMirror, 0x8006);
    WritePort(2, kTagging, 1);
    Hear(2, From(kB, kA));
    auto heard = Hear(1, From(kA, kB));
    EXPECT_EQ(heard.at(6), std::vector<Octets>{From(kA, kB, Tag(0, 1) + Payload())});
    EXPECT_EQ(heard.at(2), heard.at(6));
}

TEST_F(Lan, TheMirrorIgnoresVlansGroupsAndIsolation)
{
    WritePort(1, kMirror, 0x8006);
    WritePort(6, kVid, 500);
    WritePort(6, kGroup, 0x8009);
    Write(kForwardCtrl, 1);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 6");
    EXPECT_EQ(Ports(1, From(kA, kBroadcast, Tag(0, 77) + Payload())), "6");
}

TEST_F(Lan, CopiesAreNotMirroredAgain)
{
    WritePort(1, kMirror, 0x8006);
    WritePort(6, kMirror, 0x8007);
    WritePort(6, kVid, 500);
    WritePort(7, kVid, 501);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2 3 4 5 6");
}

TEST_F(Lan, AMirrorWithoutALinkGetsNothing)
{
    WritePort(1, kMirror, 0x8006);
    WritePort(6, kCtrl, 0);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2 3 4 5 7");
    EXPECT_EQ(Counter(6, "ifOutDiscards"), 0u);
}

namespace {
size_t allocations = 0;
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): these are what others are to use instead
void* operator new(size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    ++allocations;
    return std::malloc(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept
{
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

TEST_F(Lan, AFrameCostsNoAllocation)
{
    WritePort(1, kMirror, 0x8006);
    WritePort(2, kTagging, 1);
    Write(kSnooping, 3);
    keep = false;
    const Octets known = From(kA, kB), all = From(kB, kBroadcast, Payload(1400));
    const Octets group = From(kA, {1, 0, 0x5E, 1, 1, 1},
                              Words({0x0800, 0x4600, 32, 0, 0, 0x0102, 0, 0x0A00, 1, 0xEF01, 0x0101,
                                     0x9404, 0, 0x1600, 0, 0xEF01, 0x0101}) +
                                  Octets(20));
    const size_t before = allocations;
    for (int i = 0; i < 100; ++i) {
        bench.now += std::chrono::microseconds(100);
        bench.chip.Advance(bench.now);
        engine.Receive(1, known, bench.now);
        engine.Receive(2, all, bench.now);
        engine.Receive(1, group, bench.now);
    }
    EXPECT_EQ(allocations, before);
    EXPECT_GT(frames, 1000u);
}
