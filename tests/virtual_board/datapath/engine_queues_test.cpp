// Queues: strict priority, the rate of the port, reservation, thresholds and flow control.
#include "tests/virtual_board/datapath/lan_bench.h"

using namespace lan;
using std::chrono::nanoseconds;

namespace {

// Everything leaves through port 2, at 10 Mb/s, where a frame of 1000 octets takes 816 us.
class SlowPort : public Lan {
protected:
    static constexpr nanoseconds kFrameTime = std::chrono::microseconds(816);
    static constexpr unsigned kBuffersOfFrame = 4;

    void SetUp() override
    {
        Hear(2, From(kB, kA));
        WritePort(2, kPhyCtrl, 2 | 8);
        Hear(2, From(kB, kA));
    }
    Octets Numbered(uint8_t number, unsigned pcp)
    {
        Octets frame = From(kA, kB, Tag(pcp, 1) + Payload(1000 - 22));
        frame[60] = number;
        return frame;
    }
    std::vector<int> Order()
    {
        std::vector<int> numbers;
        const auto heard = Drain();
        for (const Octets& frame : heard.at(2))
            numbers.push_back(frame[56]);
        return numbers;
    }
    uint64_t Discards() { return Counter(2, "ifOutDiscards"); }
    // How many of so many frames given at once get out.
    size_t Survivors(unsigned count, unsigned pcp = 0)
    {
        for (unsigned i = 0; i < count; ++i)
            Give(1, Numbered(0, pcp));
        return Drain()[2].size();
    }
};

}  // namespace

TEST_F(SlowPort, TransmitsAtTheSpeedOfThePort)
{
    for (uint8_t i = 0; i < 4; ++i)
        Give(1, Numbered(i, 0));
    const nanoseconds start = bench.now;
    EXPECT_EQ(sent.size(), 1u);
    EXPECT_EQ(Order(), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_NEAR(static_cast<double>((bench.now - start).count()),
                3.0 * 996 * 8 * 100 + 3 * 20 * 8 * 100, 100);
}

TEST_F(SlowPort, TransmitsHigherPrioritiesFirst)
{
    Give(1, Numbered(99, 0));  // on the wire before the others come
    for (uint8_t pcp = 0; pcp < 8; ++pcp)
        Give(1, Numbered(pcp, pcp));
    EXPECT_EQ(Order(), (std::vector<int>{99, 7, 6, 5, 4, 3, 2, 0, 1}));
}

TEST_F(SlowPort, DiscardsWhenTheBuffersAreUsedUp)
{
    // 4096 buffers, and one frame that has left them for the wire.
    EXPECT_EQ(Survivors(1100), 4096 / kBuffersOfFrame + 1);
    EXPECT_EQ(Discards(), 1100u - 1025u);
    EXPECT_EQ(Counter(1, "etherStatsDropEvents"), 1100u - 1025u);
    EXPECT_EQ(Survivors(3), 3u);
}

TEST_F(SlowPort, LeavesReservedBuffersToTheirQueue)
{
    Write(QueueRegister(2, 7, 6), 40);
    Write(QueueRegister(5, 0, 6), 60);
    for (unsigned i = 0; i < 1100; ++i)
        Give(1, Numbered(0, 0));
    EXPECT_EQ(Discards(), 1100u - 1 - (4096 - 100) / kBuffersOfFrame);
    const uint64_t before = Discards();
    for (unsigned i = 0; i < 11; ++i)
        Give(1, Numbered(1, 7));
    EXPECT_EQ(Discards() - before, 1u);
}

TEST_F(SlowPort, AFrameForSeveralPortsIsLostOnlyWhereItDoesNotFit)
{
    for (unsigned i = 0; i < 1100; ++i)
        Give(1, Numbered(0, 0));
    const uint64_t drops = Counter(1, "etherStatsDropEvents");
    Give(1, From(kA, kBroadcast, Payload(1400)));
    EXPECT_EQ(Counter(1, "etherStatsDropEvents"), drops + 1);
    EXPECT_EQ(Counter(6, "ifOutDiscards"), 1u);
}

TEST_F(SlowPort, WithoutEarlyDetectionThereAreNoThresholds)
{
    Write(QueueRegister(2, 1, 0), 0);
    Write(QueueRegister(2, 1, 1), 0);
    EXPECT_EQ(Survivors(50), 50u);
}

TEST_F(SlowPort, DiscardsEverythingFromTheMaximumOn)
{
    Write(QueueRegister(2, 1, 0), 40);
    Write(QueueRegister(2, 1, 1), 40);
    Write(kWredCtrl, 0x6401);  // weight 0: the average is the filling
    EXPECT_EQ(Survivors(50), 40 / kBuffersOfFrame + 1);
    EXPECT_EQ(Discards(), 50u - 11u);
    EXPECT_EQ(Survivors(50, 2), 50u);  // another queue
}

TEST_F(SlowPort, DiscardsMoreTheFullerTheQueueIs)
{
    Write(QueueRegister(2, 1, 0), 0);
    Write(QueueRegister(2, 1, 1), 4000);
    Write(kWredCtrl, 0x3201);  // at most 50 percent
    const size_t survivors = Survivors(400);
    // Around 10 percent of 400, with a filling of up to 1600 of 4000 buffers.
    EXPECT_GT(survivors, 330u);
    EXPECT_LT(survivors, 390u);
}

TEST_F(SlowPort, MaximumDiscardOfZeroPercentDiscardsNothingBelowTheMaximum)
{
    Write(QueueRegister(2, 1, 0), 0);
    Write(QueueRegister(2, 1, 1), 4000);
    Write(kWredCtrl, 0x0001);
    EXPECT_EQ(Survivors(400), 400u);
}

TEST_F(SlowPort, TheAverageFollowsWithItsWeight)
{
    Write(QueueRegister(2, 1, 0), 100);
    Write(QueueRegister(2, 1, 1), 100);
    Write(kWredCtrl, 0x64F1);  // weight 15: it hardly moves
    EXPECT_EQ(Survivors(200), 200u);
}

TEST_F(SlowPort, TheThresholdsOfAllBuffersCountAsWell)
{
    Write(kWredGreenMin, 40);
    Write(kWredGreenMax, 40);
    Write(kWredCtrl, 0x6401);
    EXPECT_EQ(Survivors(50), 11u);
}

TEST_F(SlowPort, FramesThatMayBeDroppedAreYellow)
{
    Write(QueueRegister(2, 1, 2), 40);
    Write(QueueRegister(2, 1, 3), 40);
    Write(kWredCtrl, 0x6401);
    for (unsigned i = 0; i < 50; ++i)
        Give(1, From(kA, kB, Tag(0, 1, 0x8100, true) + Payload(1000 - 22)));
    EXPECT_EQ(Drain()[2].size(), 11u);
    EXPECT_EQ(Survivors(50), 50u);
}

TEST_F(SlowPort, FramesOfAPortThatHoldsTooMuchAreRed)
{
    WritePort(1, kXoff, 20);
    WritePort(1, kXon, 8);
    Write(QueueRegister(2, 1, 4), 0);
    Write(QueueRegister(2, 1, 5), 0);
    Write(kWredCtrl, 0x6401);
    for (unsigned i = 0; i < 50; ++i)
        Give(1, Numbered(0, 0));
    EXPECT_EQ(Discards(), 50u - 6u);
    auto heard = Drain();
    EXPECT_EQ(heard[2].size(), 6u);
    ASSERT_EQ(heard[1].size(), 1u);
    EXPECT_EQ(heard[1][0][5], 1);  // to 01:80:C2:00:00:01
    EXPECT_EQ(heard[1][0][12], 0x88);
    EXPECT_EQ(Counter(1, "aPAUSEMACCtrlFramesTransmitted"), 1u);
    EXPECT_EQ(Survivors(2), 2u);
}

class FlowControl : public SlowPort, public ::testing::WithParamInterface<int> {};

// Twelve of twenty buffers have left: eight are held still.
TEST_P(FlowControl, AFrameIsRedFromXoffUntilXonExactly)
{
    const int xon = GetParam();
    WritePort(1, kXoff, 20);
    WritePort(1, kXon, static_cast<uint16_t>(xon));
    Write(QueueRegister(2, 1, 4), 0);
    Write(QueueRegister(2, 1, 5), 0);
    Write(kWredCtrl, 0x6401);
    for (unsigned i = 0; i < 5; ++i)
        Give(1, Numbered(0, 0));
    EXPECT_EQ(Counter(1, "aPAUSEMACCtrlFramesTransmitted"), 0u);
    Give(1, Numbered(0, 0));
    EXPECT_EQ(Counter(1, "aPAUSEMACCtrlFramesTransmitted"), 1u);
    for (unsigned i = 0; i < 3; ++i) {
        Give(1, Numbered(0, 0));
        EXPECT_EQ(Discards(), i + 1);
        bench.Wait(*engine.NextTransmission() - bench.now);
        engine.Transmit(bench.now);
    }
    Give(1, Numbered(0, 0));
    EXPECT_EQ(Discards(), xon >= 8 ? 3u : 4u);
}

INSTANTIATE_TEST_SUITE_P(Xon, FlowControl, ::testing::Values(7, 8, 9));

TEST_F(SlowPort, APortWithoutFlowControlSendsNoPause)
{
    Survivors(1100);
    EXPECT_EQ(Counter(1, "aPAUSEMACCtrlFramesTransmitted"), 0u);
}

TEST_F(SlowPort, ALinkThatGoesDownLosesWhatWaited)
{
    for (unsigned i = 0; i < 10; ++i)
        Give(1, Numbered(0, 0));
    sent.clear();
    WritePort(2, kCtrl, 0);
    EXPECT_EQ(Drain()[2].size(), 0u);
    WritePort(2, kCtrl, 1);
    EXPECT_EQ(Survivors(1), 1u);
}
