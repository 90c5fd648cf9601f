// IGMP snooping.
#include "tests/virtual_board/datapath/snooping_frames.h"

using namespace lan;
using std::chrono::seconds;

namespace {

class IgmpSnooping : public Lan {
protected:
    void SetUp() override { Write(kSnooping, 1); }
};

}  // namespace

TEST_F(Lan, WithoutSnoopingMulticastIsFlooded)
{
    Hear(1, Report(kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
    EXPECT_EQ(Ports(3, Data6(kGroup6)), kAll);
}

TEST_F(IgmpSnooping, SendsAGroupToItsMembersAndTheInternalPortOnly)
{
    Hear(5, Query());
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 5");
    Hear(1, Report(kGroup1));
    Hear(2, Igmp(0x12, kGroup1, kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1 2 5");
    EXPECT_EQ(Ports(3, Data(kGroup2)), "0 5");
}

TEST_F(IgmpSnooping, WithoutAQuerierAGroupNobodyHasReportedIsFlooded)
{
    Hear(1, Report(kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
    EXPECT_EQ(Ports(3, Data(kGroup2)), kAll);
}

TEST_F(IgmpSnooping, ALeaveEndsTheMembershipOfItsPortAfterTheLastQuery)
{
    Hear(1, Report(kGroup1));
    Hear(2, Report(kGroup1));
    EXPECT_EQ(Ports(1, Leave(kGroup1)), "0 1");
    bench.Wait(seconds(2) - std::chrono::microseconds(10));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1 2");
    bench.Wait(std::chrono::microseconds(10));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 2");
}

TEST_F(IgmpSnooping, AnotherMemberBehindThePortAnswersTheLastQuery)
{
    Hear(1, Report(kGroup1));
    Hear(1, Leave(kGroup1));
    bench.Wait(seconds(1));
    Hear(1, Report(kGroup1));
    bench.Wait(seconds(200));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
    Hear(1, Leave(kGroup2));
    EXPECT_EQ(Ports(3, Data(kGroup2)), kAll) << "who leaves what nobody has joined joins nothing";
}

TEST_F(IgmpSnooping, AsksTheLastMembersWhereNoQuerierDoes)
{
    Hear(1, Report(kGroup1));
    const auto asked = Hear(1, Leave(kGroup1)).at(1);
    ASSERT_EQ(asked.size(), 1u);
    const Octets& query = asked[0];
    EXPECT_EQ(Octets(query.begin(), query.begin() + 6), Octets({1, 0, 0x5E, 1, 1, 1}));
    EXPECT_EQ(Octets(query.begin() + 26, query.begin() + 34), Octets({0, 0, 0, 0, 239, 1, 1, 1}));
    EXPECT_EQ(query[14 + 24], 0x11);
    EXPECT_EQ(query[14 + 25], 10) << "to be answered within a second";
    const auto whole = [](Octets message, size_t at) {
        message[at] = message[at + 1] = 0;
        return Summed(message, at);
    };
    const Octets header(query.begin() + 14, query.begin() + 38);
    const Octets message(query.begin() + 38, query.begin() + 50);
    EXPECT_EQ(whole(header, 10), header);
    EXPECT_EQ(whole(message, 2), message);
    EXPECT_EQ(Ports(1, Leave(kGroup2)), "0") << "nobody was a member";
    Hear(5, Query());
    Hear(1, Report(kGroup1));
    EXPECT_EQ(Ports(1, Leave(kGroup1)), "0 5") << "the querier asks";
}

TEST_F(IgmpSnooping, TheQuestionForTheLastMembersElectsNoQuerier)
{
    Hear(1, Report(kGroup1));
    const Octets query = Hear(1, Leave(kGroup1)).at(1).at(0);
    EXPECT_EQ(Ports(5, query), "0 1 2 3 4 6 7");
    EXPECT_EQ(Ports(3, Data(kGroup2)), kAll);
}

TEST_F(IgmpSnooping, AQueryFromNowhereElectsNoQuerier)
{
    EXPECT_EQ(Ports(5, Query({0, 0, 0, 0})), "0 1 2 3 4 6 7");
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0");
    EXPECT_EQ(Ports(1, Data(kGroup2)), "0 2 3 4 5 6 7");
}

TEST_F(IgmpSnooping, AMessageWithAWrongChecksumSaysNothing)
{
    for (Octets frame : {Report(kGroup1), Query()}) {
        frame[14 + 24 + 3] ^= 1;
        Hear(1, frame);
    }
    EXPECT_EQ(Ports(3, Report(kGroup2)), "0");
    EXPECT_EQ(Ports(5, Data(kGroup1)), "0 1 2 3 4 6 7");
}

TEST_F(IgmpSnooping, AMulticastRouterIsWhereItsHellosComeFrom)
{
    EXPECT_EQ(Ports(5, Hello({})), "0 1 2 3 4 6 7");
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0 5");
    EXPECT_EQ(Ports(1, Data(kGroup2)), "0 2 3 4 5 6 7") << "it asks nobody";
    bench.Wait(seconds(105));
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0");
    Hear(5, Hello(Words({19, 4, 0, 1, 1, 2, 30})));
    bench.Wait(seconds(29));
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0 5");
    bench.Wait(seconds(1));
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0");
}

TEST_F(IgmpSnooping, AMembershipEnds260SecondsAfterItsLastReport)
{
    Hear(1, Report(kGroup1));
    bench.Wait(seconds(200));
    Hear(1, Report(kGroup1));
    bench.Wait(seconds(259));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
    bench.Wait(seconds(1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
}

TEST_F(IgmpSnooping, ReportsAndGroupsGoWhereQueriersAreHeardFor255Seconds)
{
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0");
    EXPECT_EQ(Ports(5, Query()), "0 1 2 3 4 6 7");
    EXPECT_EQ(Ports(3, Report(kGroup1)), "0 5");
    EXPECT_EQ(Ports(3, Data(kGroup2)), "0 5");
    bench.Wait(seconds(254));
    EXPECT_EQ(Ports(3, Data(kGroup2)), "0 5");
    bench.Wait(seconds(1));
    EXPECT_EQ(Ports(3, Data(kGroup2)), kAll);
}

TEST_F(IgmpSnooping, LocalGroupsAndBroadcastAreNotRestricted)
{
    Hear(5, Query());
    EXPECT_EQ(Ports(3, Data({224, 0, 0, 251})), kAll);
    EXPECT_EQ(Ports(3, Data({224, 0, 1, 1})), "0 5");
    EXPECT_EQ(Ports(3, From(kA, kBroadcast)), kAll);
    EXPECT_EQ(Ports(3, From(kA, GroupMac(kGroup1))), kAll);  // not IPv4
}

TEST_F(IgmpSnooping, FollowsTheRecordsOfVersion3)
{
    const Octets both = RecordV3(4, kGroup1, 0) + RecordV3(1, kGroup2, 2);
    EXPECT_EQ(Ports(1, ReportV3(2, both)), "0");
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
    EXPECT_EQ(Ports(3, Data(kGroup2)), "0 1");
    Hear(1, ReportV3(2, RecordV3(6, kGroup2, 1) + RecordV3(3, kGroup1, 0)));
    bench.Wait(seconds(2));
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
    EXPECT_EQ(Ports(3, Data(kGroup2)), "0 1");
}

TEST_F(IgmpSnooping, ARecordThatIsCutShortIsIgnored)
{
    Octets frame = ReportV3(3, RecordV3(4, kGroup1, 0) + Octets{4, 0, 0, 9, 239, 2, 2, 2});
    Hear(1, frame);
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
    EXPECT_EQ(Ports(3, Data(kGroup2)), kAll);
}

TEST_F(IgmpSnooping, MembershipIsPerVlan)
{
    for (unsigned p : {1u, 2u, 3u})
        WritePort(p, kTagging, 1);
    for (unsigned p : {4u, 5u})
        WritePort(p, kVid, 50);
    Hear(4, Report(kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1 2 6 7");
    EXPECT_EQ(Ports(5, Data(kGroup1)), "0 4");
}

TEST_F(IgmpSnooping, TurningItOffForgetsTheMembers)
{
    Hear(1, Report(kGroup1));
    Write(kSnooping, 0);
    Write(kSnooping, 1);
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
}

TEST_F(IgmpSnooping, TurningMldOnKeepsTheMembers)
{
    Hear(1, Report(kGroup1));
    Write(kSnooping, 3);
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
}

TEST_F(IgmpSnooping, LeavesIpv6Alone)
{
    EXPECT_EQ(Ports(3, Data6(kGroup6)), kAll);
}

TEST_F(IgmpSnooping, AFullTableTakesUpNewGroupsOnceOldOnesEnd)
{
    for (unsigned i = 0; i < 1024; ++i)
        Hear(1, Report({239, 9, static_cast<uint8_t>(i >> 8), static_cast<uint8_t>(i)}));
    Hear(1, Report(kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), kAll);
    EXPECT_EQ(Ports(3, Data({239, 9, 3, 255})), "0 1");
    bench.Wait(seconds(260));
    Hear(1, Report(kGroup1));
    EXPECT_EQ(Ports(3, Data(kGroup1)), "0 1");
}
