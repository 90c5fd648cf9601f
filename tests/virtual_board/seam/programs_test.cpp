// Programs that know nothing of a virtual board make the library's platform calls on one.

#include <gmock/gmock.h>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::HasSubstr;

// Board time runs a thousand times faster, so that the chips are up after the first call or two.
constexpr char kFast[] = "--time-scale 0.001";
constexpr char kWaitUntilUp[] = "sleep 20\n";

TEST(Programs, ReadsAndWritesAChipRegister)
{
    auto outcome = OnBoard("two_switches.toml",
                           std::string(kWaitUntilUp) +
                               "$CLIENT mii nsgmii0 0 16 0\n"
                               "$CLIENT mii nsgmii0 0 16 4 0x1234\n"
                               "$CLIENT mii nsgmii1 0 16 4\n",
                           kFast);
    EXPECT_EQ(Printed(outcome), "0x5608\nwritten\n0x1234\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Programs, ServesBothAbisOnOneBoard)
{
    auto outcome = OnBoard("two_switches.toml",
                           std::string(kWaitUntilUp) +
                               "$CLIENT mii nsgmii0 1 16 4 0x4321\n"
                               "$OTHER mii nsgmii0 1 16 4\n"
                               "$OTHER gmac nsgmii1 nsgmii1 55 4 1\n"
                               "$OTHER mailbox ack\n"
                               "$OTHER write 0 0\n"
                               "$CLIENT read 0\n"
                               "$OTHER read 2\n"
                               "$OTHER lane 5\n",
                           kFast);
    EXPECT_EQ(Printed(outcome),
              "written\n0x4321\nresult 0\nreceived 184 of type 10 length 176\nsent 8\nwritten\n"
              "1 of value 0\n1 of value 0\nreset\n");
}

TEST(Programs, AnAbsentDeviceReadsAllOnes)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$CLIENT mii nsgmii0 0 9 2\n$CLIENT mii nsgmii0 0 9 0 0x8000\n");
    EXPECT_EQ(Printed(outcome), "0xffff\nwritten\n");
}

TEST(Programs, LeavesOtherInterfacesToTheKernel)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$CLIENT mii lo 0 16 0\n$CLIENT mii nsgmii2 0 16 0\n"
                           "$VBOARD control journal --kind mdio\n");
    // Who may not ask the kernel is told so by the kernel.
    EXPECT_THAT(Printed(outcome), testing::AnyOf("ioctl: EOPNOTSUPP\nioctl: ENODEV\n",
                                                 "ioctl: EPERM\nioctl: EPERM\n"));
}

TEST(Programs, RefusalOfTheChipIsEioWithTheReasonInTheJournal)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$CLIENT write 0 0\n"
                           "$CLIENT mii nsgmii0 0 16 4\n"
                           "$VBOARD control journal --kind mdio\n",
                           kFast);
    EXPECT_THAT(outcome.output, HasSubstr("ioctl: EIO\n"));
    EXPECT_THAT(outcome.output, testing::ContainsRegex("mdio +read bus=0 address=16 "
                                                       "reg=0x0004 -> EIO \\(.*reset.*\\)"));
}

TEST(Programs, BothFamiliesGetTheirBoardDataOnceEach)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$CLIENT mailbox ack\n$CLIENT mailbox ack\n$CLIENT mailbox ack now\n"
                           "$VBOARD control state | grep ^mailbox\n");
    EXPECT_EQ(Printed(outcome),
              "received 184 of type 10 length 176\nsent 8\n"
              "received 128 of type 11 length 120\nsent 8\n"
              "recv: EAGAIN\n"
              "mailbox: switch=acknowledged phy=acknowledged\n");
}

TEST(Programs, WithoutTheRightAcknowledgementTheDataComesAgain)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT mailbox silent\n$CLIENT mailbox wrong\n$CLIENT mailbox ack\n");
    EXPECT_EQ(Printed(outcome),
              "received 184 of type 10 length 176\n"
              "received 184 of type 10 length 176\nsent 5\n"
              "received 184 of type 10 length 176\nsent 8\n");
}

TEST(Programs, WithoutMsgTruncTheLengthIsWhatWasTaken)
{
    auto outcome = OnBoard("one_switch.toml", "$CLIENT mailbox ack short\n");
    EXPECT_EQ(Printed(outcome), "received 10 of type 10 length 176\nsent 8\n");
}

TEST(Programs, AReceiveBlocksUntilTheApplicationCpuSends)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$VBOARD control fault silent\n"
                           "$CLIENT mailbox ack > $0.out &\n"
                           "sleep 0.3; kill -0 $! && echo still waiting\n"
                           "$VBOARD control fault clear\n"
                           "wait $!; cat $0.out\n");
    EXPECT_EQ(Printed(outcome), "still waiting\nreceived 184 of type 10 length 176\nsent 8\n");
}

TEST(Programs, ASignalInterruptsAReceiveAndTheNextOneGetsTheMessage)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$VBOARD control fault silent\n"
                           "$CLIENT mailbox ack interrupted > $0.out &\n"
                           "sleep 0.4\n"
                           "$VBOARD control fault clear\n"
                           "wait $!; cat $0.out\n");
    EXPECT_EQ(Printed(outcome), "received 184 of type 10 length 176\nwas interrupted\nsent 8\n");
}

TEST(Programs, AMessageThatComesAfterATimeOutDoesNotAnswerASend)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$VBOARD control fault silent\n"
                           "$CLIENT mailbox ack late > $0.out &\n"
                           "until grep -qs timed $0.out; do sleep 0.05; done\n"
                           "$VBOARD control fault clear\n"
                           "wait $!; cat $0.out\n");
    EXPECT_EQ(Printed(outcome), "timed out\nsent 4\nreceived 184 of type 10 length 176\nsent 8\n");
}

TEST(Programs, ErrnosOfAMailboxThatIsNotUp)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$VBOARD control fault mailbox-down\n"
                           "$VBOARD control fault app-cpu-down\n"
                           "$VBOARD control fault receive-error\n"
                           "$VBOARD control fault send-error EPIPE\n"
                           "for i in 1 2 3 4 5; do $CLIENT mailbox ack; done\n");
    EXPECT_EQ(Printed(outcome),
              "socket: ENETDOWN\nbind: EHOSTDOWN\nrecv: ECONNREFUSED\n"
              "received 184 of type 10 length 176\nsend: EPIPE\n"
              "received 184 of type 10 length 176\nsent 8\n");
}

TEST(Programs, AnyRoleNumberMayBeBoundButOnlyTheAddressOfTheBoardData)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT bind 0 12 && $CLIENT bind 2 12 && echo ok\n"
                           "$CLIENT bind 1 13\n");
    EXPECT_EQ(Printed(outcome), "ok\nbind: EADDRNOTAVAIL\n");
}

TEST(Programs, ResetAttributesCarryAWriteErrorToTheFlush)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT write 1 0; $CLIENT read 1\n"
                           "$CLIENT write 1 7; $CLIENT read 1\n"
                           "$VBOARD control fault attr-error ENOSPC; $CLIENT write 1 1\n"
                           "$VBOARD control fault attr-open EACCES; $CLIENT write 1 1\n"
                           "$CLIENT write 2 1\n");
    EXPECT_EQ(Printed(outcome),
              "written\n1 of value 0\n"
              "fflush: EINVAL\nnot written\n1 of value 0\n"
              "fflush: ENOSPC\nnot written\n"
              "fopen: EACCES\n"
              "fopen: EACCES\n");
}

TEST(Programs, AnAttributeIsWrittenByAStream)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT stream 1 0; $CLIENT read 1\n"
                           "$OTHER stream 1 1; $CLIENT read 1\n"
                           "$CLIENT stream 1 7; $CLIENT read 1\n"
                           "$VBOARD control fault attr-error ENOSPC; $CLIENT stream 1 0\n"
                           "$CLIENT stream 2 1\n");
    EXPECT_EQ(Printed(outcome),
              "written\n1 of value 0\nwritten\n1 of value 1\n"
              "flush: EINVAL\n1 of value 1\nflush: ENOSPC\nofstream: EACCES\n");
}

TEST(Programs, AttributesServeAShellToo)
{
    std::string pin = "'/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset'";
    auto outcome = OnBoard("one_switch.toml", "cat " + pin + "; echo 0 > " + pin + "; cat " + pin +
                                                  "\n"
                                                  "$VBOARD control journal --kind gpio\n");
    EXPECT_THAT(outcome.output, HasSubstr("1\n0\n"));
    EXPECT_THAT(outcome.output, HasSubstr("write attribute=sgmii0_reset pin=18 text=0 -> ok"));
}

TEST(Programs, TheSystemStateIsTheBattery)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT read 2; $VBOARD control battery on; $CLIENT read 2\n"
                           "$VBOARD control battery 7; $CLIENT read 2\n"
                           "$VBOARD control fault state-text; $CLIENT read 2\n"
                           "$VBOARD control fault attr-open; $CLIENT read 2\n"
                           "$VBOARD control battery off; $CLIENT read 2\n");
    EXPECT_EQ(Printed(outcome),
              "1 of value 0\n1 of value 1\n1 of value 7\n0 of value -1\nfopen: ENOENT\n"
              "1 of value 0\n");
}

TEST(Programs, LaneDriver)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT lane 3; $CLIENT lane 6; $CLIENT lane 6; $CLIENT lane 7\n"
                           "$VBOARD control fault lane-open; $CLIENT lane 4\n"
                           "$VBOARD control fault lane-error; $CLIENT lane 4\n"
                           "$VBOARD control state | grep laneResets\n");
    EXPECT_EQ(Printed(outcome),
              "reset\nreset\nreset\nioctl: EINVAL\nopen: ENOENT\nioctl: EIO\n"
              "laneResets: 3=1 4=0 5=0 6=2\n");
}

TEST(Programs, GmacReconfiguration)
{
    auto outcome =
        OnBoard("one_switch.toml",
                "$CLIENT gmac nsgmii1 nsgmii1 55 5 1\n"
                "$CLIENT gmac nsgmii1 nsgmii0 55 5 1\n"
                "$CLIENT gmac nsgmii1 nsgmii1 54 5 1\n"
                "$VBOARD control fault gmac-result; $CLIENT gmac nsgmii1 nsgmii1 55 2 0\n"
                "$VBOARD control fault gmac-error; $CLIENT gmac nsgmii1 nsgmii1 55 2 0\n"
                "$VBOARD control state | grep nsgmii1\n");
    EXPECT_EQ(Printed(outcome),
              "result 0\nioctl: EINVAL\nioctl: EINVAL\nresult -1\nioctl: EOPNOTSUPP\n"
              "  nsgmii1: up=true speed=5 duplex=1 reconfigurations=1\n");
}

TEST(Programs, IfconfigOfTheInternalInterfaces)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT system 'ifconfig nsgmii0 down'\n"
                           "$VBOARD control state | grep nsgmii0\n"
                           "$CLIENT system 'ifconfig nsgmii0 up'\n"
                           "$VBOARD control fault interface-error; $CLIENT system 'ifconfig "
                           "nsgmii0 down'\n"
                           "$VBOARD control state | grep nsgmii0\n"
                           "$CLIENT system 'exit 3'\n");
    EXPECT_EQ(Printed(outcome),
              "status 0\n  nsgmii0: up=false speed=0 duplex=0 reconfigurations=0\nstatus 0\n"
              "SIOCSIFFLAGS: Resource temporarily unavailable\nstatus 65280\n  nsgmii0: up=true "
              "speed=0 duplex=0 reconfigurations=0\n"
              "status 768\n");
}

TEST(Programs, IpShowsTheInternalInterfacesAmongThoseOfTheMachine)
{
    auto outcome = OnBoard("one_switch.toml",
                           "ip link | grep -c ': nsgmii[01]:'; ip link | grep -c ': lo:'\n"
                           "ip -br link show nsgmii1 | tr -s ' '\n"
                           "ip addr show dev nsgmii0 | grep -c mtu\n"
                           "ip link show type dummy | grep -c nsgmii\n"
                           "ip link show nsgmii2\n");
    EXPECT_EQ(Printed(outcome),
              "2\n1\nnsgmii1 UP 02:00:5e:43:00:01 <BROADCAST,MULTICAST,UP,LOWER_UP> \n1\n0\n"
              "Device \"nsgmii2\" does not exist.\n");
}

TEST(Programs, IpSetsTheInternalInterfacesUpAndDownButNothingElse)
{
    auto outcome = OnBoard("one_switch.toml",
                           "ip link set nsgmii0 down; ip -br link show nsgmii0 | tr -s ' '\n"
                           "$VBOARD control state | grep nsgmii0\n"
                           "$VBOARD control fault interface-error; ip link set nsgmii0 up\n"
                           "ip link set nsgmii0 up && $VBOARD control state | grep nsgmii0\n"
                           "ip link set nsgmii0 mtu 9000\n"
                           "ip link add nsgmii1 type dummy\n"
                           "ip link del nsgmii1\n"
                           "ip addr add 192.0.2.77/32 dev nsgmii1\n");
    EXPECT_EQ(Printed(outcome),
              "nsgmii0 DOWN 02:00:5e:43:00:00 <BROADCAST,MULTICAST> \n"
              "  nsgmii0: up=false speed=0 duplex=0 reconfigurations=0\n"
              "RTNETLINK answers: Resource temporarily unavailable\n"
              "  nsgmii0: up=true speed=0 duplex=0 reconfigurations=0\n"
              "RTNETLINK answers: Operation not supported\n"
              "RTNETLINK answers: File exists\n"
              "RTNETLINK answers: Operation not supported\n"
              "RTNETLINK answers: Operation not supported\n");
}

double Milliseconds(const std::string& options, const std::string& call)
{
    return std::stod(Printed(OnBoard("no_devices.toml", "$CLIENT " + call + "\n", options)));
}

TEST(Programs, WaitsFollowTheTimeScale)
{
    EXPECT_GE(Milliseconds("", "usleep 30000"), 30);
    double shortened = Milliseconds("--time-scale 0.01", "sleep 3");
    EXPECT_GE(shortened, 30);
    EXPECT_LT(shortened, 1000);
    EXPECT_GE(Milliseconds("--time-scale 3", "usleep 20000"), 60);
    EXPECT_LT(Milliseconds("--time-scale 0.001", "usleep 900000"), 500);
}

TEST(Programs, AShortenedWaitCountsInFullOnTheBoard)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$CLIENT read 2; $CLIENT sleep 3 >/dev/null; $CLIENT read 2\n"
                           "$VBOARD control journal --kind attr --json\n",
                           "--time-scale 0.01");
    std::string text = outcome.output;
    auto time = [&] {
        text = text.substr(text.find("\"timeNs\": ") + 10);
        return std::stoll(text);
    };
    auto first = time();
    auto second = time();
    EXPECT_GE(second - first, 3'000'000'000);
}

}  // namespace
}  // namespace vboard_test
