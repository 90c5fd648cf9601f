// Learning, flooding, filtering and ageing.
#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;
using std::chrono::seconds;

TEST_F(Lan, FloodsToEveryOtherPortUntilTheDestinationIsKnown)
{
    EXPECT_EQ(Ports(1, From(kA, kB)), "0 2 3 4 5 6 7");
    EXPECT_EQ(Ports(2, From(kB, kA)), "1");
    EXPECT_EQ(Ports(1, From(kA, kB)), "2");
    EXPECT_EQ(Known(kA), "1/1");
    EXPECT_EQ(Known(kB), "2/1");
}

TEST_F(Lan, CarriesTheFrameUnchangedBetweenUntaggedPorts)
{
    Hear(2, From(kB, kA));
    const Octets frame = From(kA, kB, Payload(700));
    const auto heard = Hear(1, frame);
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard.at(2), std::vector<Octets>{frame});
}

TEST_F(Lan, PadsShortFrames)
{
    Hear(2, From(kB, kA));
    Octets frame = From(kA, kB, Words({kTestType, 0x0102}));
    const auto heard = Hear(1, frame);
    frame.resize(60);
    EXPECT_EQ(heard.at(2), std::vector<Octets>{frame});
    EXPECT_EQ(Counter(1, "etherStatsPkts64Octets"), 1u);
}

TEST_F(Lan, FiltersWhatIsForTheIngressPortItself)
{
    Hear(2, From(kB, kA));
    EXPECT_EQ(Ports(2, From(kA, kB)), "");
    EXPECT_EQ(Counter(2, "dot1dTpPortInDiscards"), 1u);
}

TEST_F(Lan, AStationThatMovesIsFoundAtItsNewPort)
{
    Hear(1, From(kA, kB));
    Hear(3, From(kA, kB));
    EXPECT_EQ(Ports(2, From(kB, kA)), "3");
    EXPECT_EQ(Known(kA), "3/1");
}

TEST_F(Lan, LearnsNoGroupAndNoZeroAddress)
{
    Hear(1, From({3, 0, 0, 0, 0, 1}, kB));
    Hear(1, From({}, kB));
    EXPECT_EQ(bench.chip.Stations().Count(), 0u);
}

TEST_F(Lan, AStaticEntryIsNotMoved)
{
    Write(0x0202, 0x0200);
    Write(0x0204, 0x0001);
    Write(0x0205, 1);
    Write(0x0206, 4);
    Write(0x0201, 2);
    bench.Wait(std::chrono::microseconds(5));
    Hear(1, From(kA, kB));
    EXPECT_EQ(Ports(2, From(kB, kA)), "4");
}

class Ageing : public Lan, public ::testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(Ageing, ForgetsAfterTheTimeOfItsStep)
{
    Write(kAgeing, static_cast<uint16_t>(GetParam().first));
    Hear(1, From(kA, kB));
    bench.Wait(seconds(GetParam().second) - seconds(1));
    EXPECT_EQ(Ports(2, From(kB, kA)), "1");
    bench.Wait(seconds(1));
    EXPECT_EQ(Ports(2, From(kB, kA)), "0 1 3 4 5 6 7");
}

INSTANTIATE_TEST_SUITE_P(Steps, Ageing,
                         ::testing::Values(std::pair(1, 15), std::pair(2, 75), std::pair(3, 300),
                                           std::pair(4, 1200), std::pair(5, 4800)));

TEST_F(Lan, SpeakingAgainKeepsTheEntry)
{
    Write(kAgeing, 1);
    Hear(1, From(kA, kB));
    bench.Wait(seconds(10));
    Hear(1, From(kA, kB));
    bench.Wait(seconds(10));
    EXPECT_EQ(Ports(2, From(kB, kA)), "1");
}

TEST_F(Lan, CountsTheAddressesThatFindTheTableFullAndStillForwards)
{
    for (unsigned station = 1; station <= 2050; ++station)
        Hear(1, From(Station(station), kBroadcast));
    EXPECT_EQ(bench.chip.Stations().Count(), 2048u);
    EXPECT_EQ(Read(kFdbRefused), 2u);
    EXPECT_EQ(Ports(1, From(Station(3000), Station(3001))), "0 2 3 4 5 6 7");
}

Octets Reserved(uint8_t last)
{
    return From(kA, {0x01, 0x80, 0xC2, 0, 0, last});
}

TEST_F(Lan, ReservedAddressesGoToTheInternalPortOnly)
{
    for (uint8_t last = 0; last <= 15; ++last)
        EXPECT_EQ(Ports(1, Reserved(last)), last == 1 ? "" : "0") << int(last);
    EXPECT_EQ(Ports(1, Reserved(16)), "0 2 3 4 5 6 7");
    EXPECT_EQ(Counter(1, "aPAUSEMACCtrlFramesReceived"), 1u);
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 17u);
    EXPECT_EQ(Counter(1, "dot1dTpPortInDiscards"), 0u);
}

TEST_F(Lan, TheInternalPortSendsToReservedAddresses)
{
    WritePort(3, kVid, 103);
    const Octets tagged = From(kA, {0x01, 0x80, 0xC2, 0, 0, 0x0E}, Tag(0, 103) + Payload());
    EXPECT_EQ(Ports(0, tagged), "3");
    EXPECT_EQ(Ports(0, Reserved(1)), "");
}

// What belongs to the bridges of the customer is for them.
TEST_F(Lan, AProviderBridgeTrapsTheAddressesOfItsServiceVlansOnly)
{
    Write(kPbTpid, 0x88A8);
    Write(kPbCtrl, 1);
    for (uint8_t last = 0; last <= 15; ++last) {
        const bool trapped = last >= 2 && last <= 10;
        EXPECT_EQ(Ports(1, Reserved(last)), last == 1 ? ""
                                            : trapped ? "0"
                                                      : "0 2 3 4 5 6 7")
            << int(last);
    }
}

TEST_F(Lan, DropsFramesThatComeFromAGroup)
{
    EXPECT_EQ(Ports(1, From(kBroadcast, kB)), "");
    EXPECT_EQ(Ports(1, From({3, 0, 0, 0, 0, 1}, kB)), "");
    EXPECT_EQ(Counter(1, "dot1dTpPortInDiscards"), 2u);
    EXPECT_EQ(Counter(1, "aFramesReceivedOK"), 2u);
}

TEST_F(Lan, DropsFramesThatEndInsideTheirTag)
{
    const Octets whole = From(kA, kB, Tag(0, 1) + Words({kTestType}));
    for (size_t size = 14; size < whole.size(); ++size)
        EXPECT_EQ(Ports(1, Octets(whole.begin(), whole.begin() + static_cast<long>(size))), "")
            << size;
    EXPECT_EQ(Known(kA), "");
    EXPECT_EQ(Counter(1, "dot1dTpPortInDiscards"), 4u);
    EXPECT_EQ(Ports(1, whole), "0 2 3 4 5 6 7");
}

TEST_F(Lan, AStationIsForgottenWhenItsPortLeavesTheVlan)
{
    Hear(2, From(kB, kA));
    WritePort(2, kVid, 50);
    WritePort(2, kVid, 1);
    EXPECT_EQ(Known(kB), "");
}
