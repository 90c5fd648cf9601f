// VLANs: separation, tags in and out, priorities, steering by source address, provider bridging.
#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;

TEST_F(Lan, PortsOfDifferentVlansDoNotHearEachOther)
{
    WritePort(2, kVid, 100);
    WritePort(3, kVid, 100);
    EXPECT_EQ(Ports(2, From(kA, kBroadcast)), "0 3");
    EXPECT_EQ(Ports(1, From(kB, kBroadcast)), "0 4 5 6 7");
}

TEST_F(Lan, AnAddressIsLearntPerVlan)
{
    WritePort(2, kVid, 100);
    Hear(1, From(kA, kB));
    Hear(2, From(kA, kB));
    EXPECT_EQ(Known(kA), "1/1 2/100");
    EXPECT_EQ(Ports(3, From(kB, kA)), "1");
}

TEST_F(Lan, ATaggedFrameOfAnotherVlanIsDroppedAndCounted)
{
    EXPECT_EQ(Ports(1, From(kA, kBroadcast, Tag(0, 7) + Payload())), "");
    EXPECT_EQ(Counter(1, "dot1qTpVlanPortInDiscards"), 1u);
    EXPECT_EQ(Counter(1, "dot1dTpPortInDiscards"), 1u);
    EXPECT_EQ(Known(kA), "");
}

TEST_F(Lan, VlanId4095IsDroppedEvenOnTheInternalPort)
{
    EXPECT_EQ(Ports(0, From(kA, kBroadcast, Tag(0, 4095) + Payload())), "");
    EXPECT_EQ(Counter(0, "dot1qTpVlanPortInDiscards"), 1u);
}

TEST_F(Lan, TheInternalPortReachesEveryVlanByTag)
{
    WritePort(2, kVid, 100);
    const auto heard = Hear(0, From(kA, kBroadcast, Tag(0, 100) + Payload()));
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kBroadcast)});
}

TEST_F(Lan, TheInternalPortSeesOtherVlansTaggedAndItsOwnUntagged)
{
    WritePort(2, kVid, 100);
    WritePort(2, kPcp, 5);
    EXPECT_EQ(Hear(2, From(kA, kBroadcast)).at(0),
              std::vector<Octets>{From(kA, kBroadcast, Tag(5, 100) + Payload())});
    EXPECT_EQ(Hear(1, From(kB, kBroadcast)).at(0), std::vector<Octets>{From(kB, kBroadcast)});
    WritePort(0, kTagging, 1);
    EXPECT_EQ(Hear(1, From(kB, kBroadcast)).at(0),
              std::vector<Octets>{From(kB, kBroadcast, Tag(0, 1) + Payload())});
}

TEST_F(Lan, ALanPortWithEgressTaggingSendsTheTag)
{
    WritePort(1, kPcp, 3);
    WritePort(2, kTagging, 1);
    auto heard = Hear(1, From(kA, kBroadcast));
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kBroadcast, Tag(3, 1) + Payload())});
    EXPECT_EQ(heard.at(3), std::vector<Octets>{From(kA, kBroadcast)});
}

TEST_F(Lan, TakesPriorityAndDropEligibilityFromTheTag)
{
    WritePort(1, kPcp, 3);
    WritePort(2, kTagging, 1);
    const Octets tag = Tag(6, 1, 0x8100, true);
    EXPECT_EQ(Hear(1, From(kA, kBroadcast, tag + Payload())).at(2),
              std::vector<Octets>{From(kA, kBroadcast, tag + Payload())});
}

TEST_F(Lan, APriorityTaggedFrameGetsThePvidAndKeepsItsPriority)
{
    WritePort(1, kVid, 9);
    WritePort(2, kVid, 9);
    WritePort(2, kTagging, 1);
    EXPECT_EQ(Hear(1, From(kA, kBroadcast, Tag(4, 0) + Payload())).at(2),
              std::vector<Octets>{From(kA, kBroadcast, Tag(4, 9) + Payload())});
}

TEST_F(Lan, OnlyTheOuterTagIsTakenOff)
{
    const auto heard = Hear(1, From(kA, kBroadcast, Tag(0, 1) + Tag(2, 55) + Payload()));
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kBroadcast, Tag(2, 55) + Payload())});
}

TEST_F(Lan, AFrameThatBecomesTooShortWithoutItsTagIsPadded)
{
    const Octets full = From(kA, kBroadcast, Tag(0, 1) + Payload(42));
    ASSERT_EQ(full.size(), 60u);
    Octets expected = From(kA, kBroadcast, Payload(42));
    expected.resize(60);
    EXPECT_EQ(Hear(1, full).at(2), std::vector<Octets>{expected});
}

TEST_F(Lan, SteersAStationIntoAVlanByItsAddress)
{
    MacVlan(0, 1, 200, 0xFFF, kA);
    WritePort(2, kVid, 200);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 2");
    EXPECT_EQ(Ports(1, From(kB, kBroadcast)), "0 3 4 5 6 7");
    EXPECT_EQ(Ports(3, From(kA, kBroadcast)), "0 1 4 5 6 7");  // another port's entry
    EXPECT_EQ(Ports(2, From(kC, kBroadcast)), "0 1");          // port 1 is a member
}

TEST_F(Lan, ComparesTheNibblesOfTheMaskOnly)
{
    MacVlan(0, 1, 200, 0xFFC, kA);  // the last two hex digits do not count
    WritePort(2, kVid, 200);
    EXPECT_EQ(Ports(1, From({0x02, 0, 0, 0, 0, 0x7F}, kBroadcast)), "0 2");
    EXPECT_EQ(Ports(1, From({0x02, 0, 0, 0, 0x10, 0x01}, kBroadcast)), "0 3 4 5 6 7");
    EXPECT_EQ(Ports(1, From({0x12, 0, 0, 0, 0, 0x01}, kBroadcast)), "0 3 4 5 6 7");
}

TEST_F(Lan, TheEntryWithMoreMaskBitsCountsThenTheLargerMask)
{
    WritePort(2, kVid, 200);
    WritePort(3, kVid, 300);
    WritePort(4, kVid, 400);
    MacVlan(0, 1, 200, 0x00F, kA);
    MacVlan(1, 1, 300, 0xF00, kA);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 3");
    MacVlan(2, 1, 400, 0x01F, kA);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 4");
}

TEST_F(Lan, AnEntryThatIsTakenAwaySteersNoMore)
{
    MacVlan(0, 1, 200, 0xFFF, kA);
    WritePort(2, kVid, 200);
    Write(0x0400, 0);
    EXPECT_EQ(Ports(1, From(kA, kBroadcast)), "0 3 4 5 6 7");
}

class ProviderBridge : public Lan {
protected:
    void SetUp() override
    {
        Write(kPbCtrl, 1);
        WritePort(3, kTagging, 1);
    }
};

TEST_F(ProviderBridge, AddsTheServiceTagTowardsTheProvider)
{
    WritePort(1, kPcp, 2);
    auto heard = Hear(1, From(kA, kBroadcast));
    const Octets tagged = From(kA, kBroadcast, Tag(2, 1, 0x88A8) + Payload());
    EXPECT_EQ(heard.at(0), std::vector<Octets>{tagged});
    EXPECT_EQ(heard.at(3), std::vector<Octets>{tagged});
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kBroadcast)});
}

TEST_F(ProviderBridge, ACustomersTagIsData)
{
    const Octets customer = From(kA, kBroadcast, Tag(7, 1234) + Payload());
    auto heard = Hear(1, customer);
    EXPECT_EQ(heard.at(2), std::vector<Octets>{customer});
    EXPECT_EQ(heard.at(3), std::vector<Octets>{
                               From(kA, kBroadcast, Tag(0, 1, 0x88A8) + Tag(7, 1234) + Payload())});
}

TEST_F(ProviderBridge, ACustomersServiceTagIsDataToo)
{
    const Octets customer = From(kA, kBroadcast, Tag(7, 1234, 0x88A8) + Payload());
    EXPECT_EQ(Hear(1, customer).at(2), std::vector<Octets>{customer});
}

TEST_F(ProviderBridge, TakesTheServiceTagOffTowardsTheCustomer)
{
    WritePort(2, kVid, 70);
    const auto heard = Hear(0, From(kA, kBroadcast, Tag(1, 70, 0x88A8) + Tag(7, 5) + Payload()));
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard.at(2), std::vector<Octets>{From(kA, kBroadcast, Tag(7, 5) + Payload())});
}

TEST_F(ProviderBridge, TheIdentifierCanBeAnother)
{
    Write(kPbTpid, 0x9100);
    EXPECT_EQ(Hear(1, From(kA, kBroadcast)).at(0),
              std::vector<Octets>{From(kA, kBroadcast, Tag(0, 1, 0x9100) + Payload())});
    Write(kPbCtrl, 0);
    EXPECT_EQ(Hear(1, From(kA, kBroadcast)).at(3),
              std::vector<Octets>{From(kA, kBroadcast, Tag(0, 1) + Payload())});
}
