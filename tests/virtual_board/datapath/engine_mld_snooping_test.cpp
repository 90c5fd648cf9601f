// MLD snooping.
#include "tests/virtual_board/datapath/snooping_frames.h"

using namespace lan;
using std::chrono::seconds;

namespace {

class MldSnooping : public Lan {
protected:
    void SetUp() override { Write(kSnooping, 2); }
};

}  // namespace

TEST_F(MldSnooping, FollowsVersion1)
{
    EXPECT_EQ(Ports(1, Mld1(131, kGroup6, kGroup6)), "0");
    EXPECT_EQ(Ports(3, Data6(kGroup6)), "0 1");
    Hear(1, Mld1(132, kGroup6, kAllMldRouters));
    bench.Wait(seconds(2));
    EXPECT_EQ(Ports(3, Data6(kGroup6)), kAll);
}

TEST_F(MldSnooping, AsksTheLastMembersWhereNoQuerierDoes)
{
    Hear(1, Mld2(4, kGroup6));
    const auto asked = Hear(1, Mld2(3, kGroup6)).at(1);
    ASSERT_EQ(asked.size(), 1u);
    const Octets& query = asked[0];
    EXPECT_EQ(Octets(query.begin(), query.begin() + 6), Octets({0x33, 0x33, 0, 0, 0x12, 0x34}));
    EXPECT_EQ(Octets(query.begin() + 22, query.begin() + 24), Octets({0xFE, 0x80}));
    EXPECT_EQ(Octets(query.begin() + 38, query.begin() + 54), kGroup6);
    // Elsewhere it would be a query like others: it is complete, and its checksum is right.
    Hear(5, query);
    EXPECT_EQ(Ports(3, Data6(kGroup6)), "0 1 5");
}

TEST_F(MldSnooping, FollowsVersion2)
{
    EXPECT_EQ(Ports(1, Mld2(4, kGroup6)), "0");
    EXPECT_EQ(Ports(3, Data6(kGroup6)), "0 1");
    Hear(1, Mld2(3, kGroup6));
    bench.Wait(seconds(2));
    EXPECT_EQ(Ports(3, Data6(kGroup6)), kAll);
}

TEST_F(MldSnooping, HearsQueriers)
{
    EXPECT_EQ(Ports(5, Mld1(130, Octets(16), kAllNodes)), "0 1 2 3 4 6 7");
    EXPECT_EQ(Ports(3, Data6(kGroup6)), "0 5");
}

TEST_F(MldSnooping, AMulticastRouterIsWhereItsHellosComeFrom)
{
    const Octets routers = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 13};
    const Octets hello = {0x20, 0, 0, 0};
    Hear(5, Ipv6(routers, 103, Summed(hello, 2, PseudoHeader(routers, 103, hello.size()))));
    EXPECT_EQ(Ports(3, Mld2(4, kGroup6)), "0 5");
}

TEST_F(MldSnooping, AMessageWithAWrongChecksumSaysNothing)
{
    Octets report = Mld2(4, kGroup6);
    report.back() ^= 1;
    Hear(1, report);
    EXPECT_EQ(Ports(3, Data6(kGroup6)), kAll);
}

TEST_F(MldSnooping, DoesNotRestrictNeighbourDiscovery)
{
    Hear(5, Mld1(130, Octets(16), kAllNodes));
    const Octets solicited = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xFF, 0, 0x12, 0x34};
    EXPECT_EQ(Ports(3, Data6(solicited)), kAll);
}

TEST_F(MldSnooping, DoesNotRestrictAllNodesOrIpv4)
{
    Hear(5, Mld1(130, Octets(16), kAllNodes));
    EXPECT_EQ(Ports(3, Data6(kAllNodes)), kAll);
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
}

TEST_F(MldSnooping, SurvivesMessagesOfEveryLength)
{
    Write(kSnooping, 3);
    for (const Octets& whole : {Mld2(4, kGroup6), Mld1(131, kGroup6, kGroup6), Report(kGroup1),
                                ReportV3(9, RecordV3(4, kGroup1, 200))}) {
        for (size_t size = 14; size <= whole.size(); ++size)
            Hear(1, Octets(whole.begin(), whole.begin() + static_cast<long>(size)));
    }
    EXPECT_EQ(Ports(3, Data6(kGroup6)), "0 1");
}
