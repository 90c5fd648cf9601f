// IGMP and MLD snooping.
#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;
using std::chrono::seconds;

namespace {

using Group = std::array<uint8_t, 4>;
constexpr Group kGroup1 = {239, 1, 1, 1};
constexpr Group kGroup2 = {239, 2, 2, 2};
constexpr Group kAllRouters = {224, 0, 0, 2};

MacAddress GroupMac(const Group& group)
{
    return {0x01, 0x00, 0x5E, static_cast<uint8_t>(group[1] & 0x7F), group[2], group[3]};
}

// With its Internet checksum at an offset; start is the sum of what is before the message.
Octets Summed(Octets message, size_t at = 2, uint32_t start = 0)
{
    uint32_t sum = start;
    for (size_t i = 0; i < message.size(); ++i)
        sum += i % 2 == 0 ? message[i] << 8 : message[i];
    while (sum >> 16 != 0)
        sum = (sum & 0xFFFF) + (sum >> 16);
    message[at] = static_cast<uint8_t>(~sum >> 8);
    message[at + 1] = static_cast<uint8_t>(~sum);
    return message;
}

Octets Ipv4(const MacAddress& source, const Group& to, uint8_t protocol, const Octets& data,
            const Group& from = {10, 0, 0, 1})
{
    const auto total = static_cast<unsigned>(24 + data.size());
    return From(source, GroupMac(to),
                Words({0x0800, 0x4600, total, 0, 0}) + Octets{1, protocol, 0, 0} +
                    Octets(from.begin(), from.end()) + Octets(to.begin(), to.end()) +
                    Octets{0x94, 4, 0, 0} + data);
}

Octets Data(const Group& group)
{
    return Ipv4(kC, group, 17, Octets(20));
}

Octets Igmp(uint8_t type, const Group& group, const Group& to, const Group& from = {10, 0, 0, 1})
{
    return Ipv4(kA, to, 2, Summed(Octets{type, 0, 0, 0} + Octets(group.begin(), group.end())),
                from);
}

Octets Report(const Group& group)
{
    return Igmp(0x16, group, group);
}

Octets Leave(const Group& group)
{
    return Igmp(0x17, group, kAllRouters);
}

Octets Query(const Group& from = {10, 0, 0, 1})
{
    return Igmp(0x11, {}, {224, 0, 0, 1}, from);
}

Octets Hello(const Octets& options)
{
    return Ipv4(kA, {224, 0, 0, 13}, 103, Summed(Octets{0x20, 0, 0, 0} + options));
}

Octets RecordV3(uint8_t type, const Group& group, unsigned sources)
{
    return Octets{type, 0, 0, static_cast<uint8_t>(sources)} + Octets(group.begin(), group.end()) +
           Octets(4 * sources);
}

Octets ReportV3(unsigned count, const Octets& records)
{
    return Ipv4(kA, {224, 0, 0, 22}, 2,
                Summed(Octets{0x22, 0, 0, 0, 0, 0} + Words({count}) + records));
}

const Octets kGroup6 = {0xFF, 0x15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x12, 0x34};
const Octets kAllNodes = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const Octets kAllMldRouters = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x16};

Octets Ipv6(const Octets& to, uint8_t next, const Octets& data)
{
    const MacAddress mac = {0x33, 0x33, to[12], to[13], to[14], to[15]};
    return From(kA, mac,
                Words({0x86DD, 0x6000, 0, static_cast<unsigned>(data.size())}) + Octets{next, 1} +
                    Octets(16, 0xFE) + to + data);
}

Octets Data6(const Octets& to)
{
    return Ipv6(to, 17, Octets(20));
}

// From fefe:...: an even number of octets.
uint32_t PseudoHeader(const Octets& to, uint8_t next, size_t size)
{
    uint32_t sum = 8 * 0xFEFE + next + static_cast<uint32_t>(size);
    for (size_t i = 0; i < to.size(); i += 2)
        sum += to[i] << 8 | to[i + 1];
    return sum;
}

Octets Mld(const Octets& to, const Octets& message)
{
    return Ipv6(
        to, 0,
        Octets{58, 0, 5, 2, 0, 0, 1, 0} + Summed(message, 2, PseudoHeader(to, 58, message.size())));
}

Octets Mld1(uint8_t type, const Octets& group, const Octets& to)
{
    return Mld(to, Octets{type, 0, 0, 0, 0, 0, 0, 0} + group);
}

Octets Mld2(uint8_t record, const Octets& group)
{
    return Mld(kAllMldRouters, Octets{143, 0, 0, 0, 0, 0, 0, 1, record, 0, 0, 0} + group);
}

class IgmpSnooping : public Lan {
protected:
    void SetUp() override { Write(kSnooping, 1); }
};

class MldSnooping : public Lan {
protected:
    void SetUp() override { Write(kSnooping, 2); }
};

constexpr const char* kAll = "0 1 2 4 5 6 7";  // from port 3

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
