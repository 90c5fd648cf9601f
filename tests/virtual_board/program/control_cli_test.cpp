// The command line of `orblink-vboard control`: what it refuses and how, and what it changes.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::HasSubstr;

struct Refused {
    const char* words;
    int status;
    const char* message;
};

void PrintTo(const Refused& refused, std::ostream* out)
{
    *out << refused.words;
}

class ControlRefuses : public testing::TestWithParam<Refused> {};

TEST_P(ControlRefuses, WithCodeAndReason)
{
    auto outcome =
        OnBoard("two_switches.toml", std::string("$VBOARD control ") + GetParam().words + "\n");
    EXPECT_EQ(outcome.status, GetParam().status);
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    All, ControlRefuses,
    testing::ValuesIn(std::vector<Refused>{
        {"", 2, "a word is missing: expected one of state, journal, "},
        {"explode", 2, "unknown word 'explode': expected one of state, "},
        {"battery on now", 2, "unexpected word 'now'"},
        {"state --loud", 2, "--loud"},
        {"mailbox empty", 2, "empty"},
        {"battery", 2, "state is required"},
        {"battery full", 2, "full"},
        {"battery -1", 2, "-1"},
        {"link sw0 up", 2, "'sw0' names no port"},
        {"link sw0:x up", 2, "'sw0:x' names no port"},
        {"link sw0:2 sideways", 2, "sideways"},
        {"link sw0:2 up --speed 42", 2, "42"},
        {"link sw2:1 up", 3, "no device 'sw2' on this board, which has sw0, sw1"},
        {"link sw0:9 up", 3, "sw0:9 is no port, or has no link of this speed"},
        {"fault", 2, "name is required"},
        {"fault gremlin", 3, "no fault 'gremlin': expected one of mailbox-down, "},
        {"fault silent 3", 2, "'3' is no value for silent: expected no value"},
        {"fault mdio-error ENONSENSE", 2, "expected the name or number of an errno"},
        {"fault mdio-error 0", 2, "expected the name or number of an errno"},
        {"fault device-count 256", 2, "expected a number from 0 to 255"},
        {"fault mdio-error --at 0", 2, "--at"},
        {"learn sw0:1 02:00:00:00:00", 2, "'02:00:00:00:00' is no MAC address"},
        {"learn sw0:1 02:00:00:00:00:0g", 2, "is no MAC address"},
        {"learn sw0:1 02:00:00:00:00:01 4096", 2, "4096"},
        {"counter sw0:1 noSuchCounter 5", 3, "sw0:1 has no counter 'noSuchCounter'"},
        {"reg sw0 32", 2, "'32' is no register"},
        {"reg sw0 0x7-", 2, "'0x7-' is no register"},
        {"reg sw0 31", 5, "sw0 shows no such register"},
        {"journal --kind radio", 2, "radio"},
        {"mailbox resend modem", 2, "modem"},
        {"state sw7", 3, "no device 'sw7'"}}));

TEST(Control, WithoutABoardItSaysHowToNameOne)
{
    auto outcome = Shell("unset ORBLINK_VBOARD; $VBOARD control state");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, HasSubstr("no board named: give --socket PATH"));
}

TEST(Control, ABoardThatIsNotThereIsAFailure)
{
    auto outcome = Shell("$VBOARD control --socket /no/such/socket state");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("no board at /no/such/socket: No such file"));
}

TEST(Control, AnAnswerThatCannotBeWrittenIsAFailure)
{
    auto outcome = OnBoard("one_switch.toml", "$VBOARD control state >/dev/full; echo $?\n");
    EXPECT_THAT(outcome.output,
                HasSubstr("orblink-vboard: standard output: No space left on device"));
    EXPECT_THAT(outcome.output, HasSubstr("\n1\n"));
}

nlohmann::json AskJson(const std::string& board, const std::string& script,
                       const std::string& options = "")
{
    return nlohmann::json::parse(Printed(OnBoard(board, script, options)));
}

TEST(Control, StateAsJsonHasTheBoardAndItsChips)
{
    auto state = AskJson("two_switches.toml", "$VBOARD control --json state");
    EXPECT_EQ(state["schema"], 1);
    EXPECT_EQ(state["board"], "two switches");
    EXPECT_EQ(state["macAddresses"][4], "02:00:5e:00:00:05");
    EXPECT_EQ(state["mailbox"], (nlohmann::json{{"switch", "due"}, {"phy", "due"}}));
    EXPECT_EQ(state["devices"]["sw1"]["mdioBus"], 1);
    EXPECT_EQ(state["devices"]["sw0"]["state"]["chip"], "VS08");
    EXPECT_EQ(state["devices"]["sw0"]["state"]["ports"][1]["link"]["up"], true);
    EXPECT_EQ(state["devices"]["sw0"]["state"]["ports"][3]["link"]["up"], false);
}

TEST(Control, ALinkComesUpAtItsSpeed)
{
    auto state = AskJson("two_switches.toml",
                         "$VBOARD control link sw0:3 up --speed 100 --half\n"
                         "$VBOARD control link sw0:1 down\n"
                         "$VBOARD control state sw0 --json");
    const auto& ports = state["devices"]["sw0"]["state"]["ports"];
    EXPECT_EQ(ports[3]["link"],
              (nlohmann::json{{"up", true}, {"speed", 3}, {"fullDuplex", false}}));
    EXPECT_EQ(ports[1]["link"]["up"], false);
    EXPECT_EQ(state["devices"].size(), 1U);
}

TEST(Control, APhyNegotiatesWithItsPartnerAndLosesItsCable)
{
    auto outcome = OnBoard("phy.toml",
                           "sleep 50; $CLIENT mii nsgmii0 0 4 2\n"
                           "$CLIENT mii nsgmii0 0 4 1 >/dev/null; $CLIENT mii nsgmii0 0 4 1\n"
                           "$VBOARD control link phy0 down\n"
                           "$CLIENT mii nsgmii0 0 4 1\n"
                           "$CLIENT mii nsgmii0 0 0x809f 0x0e23\n",
                           "--time-scale 0.001");
    EXPECT_EQ(Printed(outcome), "0x0a5a\n0x796d\n0x7949\n0x0001\n");
}

TEST(Control, StationsAreLearnedAndForgotten)
{
    auto outcome = OnBoard("two_switches.toml",
                           "sleep 50\n"
                           "$VBOARD control learn sw0:1 02:00:00:00:00:07 5\n"
                           "$VBOARD control state sw0 --json | grep -c 02:00:00:00:00:07\n"
                           "$VBOARD control forget sw0\n"
                           "$VBOARD control state sw0 --json | grep -c 02:00:00:00:00:07\n",
                           "--time-scale 0.001");
    EXPECT_EQ(Printed(outcome), "1\n0\n");
}

TEST(Control, ACounterCounts)
{
    auto state = AskJson("two_switches.toml",
                         "sleep 50; $VBOARD control counter sw1:2 etherStatsPkts 40\n"
                         "$VBOARD control counter sw1:2 etherStatsPkts 2\n"
                         "$VBOARD control state sw1 --json",
                         "--time-scale 0.001");
    EXPECT_EQ(state["devices"]["sw1"]["state"]["ports"][2]["counters"]["etherStatsPkts"], 42);
}

TEST(Control, RegistersAreShownWithoutABusAccess)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$VBOARD control reg sw0 0x0-1\n$VBOARD control journal --kind mdio\n");
    EXPECT_EQ(Printed(outcome), "0x00 0x5608\n0x01 0x0010\n");
}

TEST(Control, JournalFiltersAndTails)
{
    auto journal = AskJson("two_switches.toml",
                           "$CLIENT lane 3 >/dev/null; $CLIENT read 2 >/dev/null\n"
                           "$CLIENT lane 4 >/dev/null\n"
                           "$VBOARD control journal --kind lane --tail 3 --json");
    ASSERT_EQ(journal["entries"].size(), 3U);
    EXPECT_EQ(journal["entries"][0]["call"], "reset");
    EXPECT_EQ(journal["entries"][0]["facts"]["client"], 3);
    EXPECT_EQ(journal["entries"][1]["call"], "open");
    EXPECT_EQ(journal["entries"][2]["facts"]["client"], 4);
    EXPECT_EQ(journal["entries"][2]["number"], 5);
    EXPECT_EQ(journal["entries"][2]["result"], "ok");
    EXPECT_GT(journal["entries"][2]["pid"], 1);
    EXPECT_EQ(journal["dropped"], 0);
}

TEST(Control, AFaultStrikesWhereAndAsOftenAsAsked)
{
    auto outcome = OnBoard("one_switch.toml",
                           "$VBOARD control fault mdio-error ENXIO --at 2 --times 2\n"
                           "for i in 1 2 3 4; do $CLIENT mii nsgmii0 0 9 2; done\n"
                           "$VBOARD control fault lane-error --times 0\n"
                           "$VBOARD control state | grep -A1 faults:\n"
                           "$CLIENT lane 3; $CLIENT lane 3\n"
                           "$VBOARD control fault clear --json | grep cleared\n"
                           "$CLIENT lane 3\n");
    EXPECT_EQ(Printed(outcome),
              "0xffff\nioctl: ENXIO\nioctl: ENXIO\n0xffff\n"
              "faults:\n  - name=lane-error value=5 at=1 times=0\n"
              "ioctl: EIO\nioctl: EIO\n  \"cleared\": 1\nreset\n");
}

TEST(Control, TheMailboxSendsAgainWhatItIsAskedFor)
{
    auto outcome = OnBoard("two_switches.toml",
                           "$VBOARD control mailbox resend phy; $CLIENT mailbox ack\n"
                           "$CLIENT mailbox ack\n"
                           "$VBOARD control mailbox resend; $CLIENT mailbox ack\n"
                           "$CLIENT mailbox ack\n");
    std::string phy = "received 128 of type 11 length 120\nsent 8\n";
    std::string sw = "received 184 of type 10 length 176\nsent 8\n";
    EXPECT_EQ(Printed(outcome), phy + sw + sw + phy);
}

TEST(Control, OutputLargerThanOnePacketArrivesWhole)
{
    auto outcome =
        OnBoard("one_switch.toml",
                "pin='/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset'\n"
                "i=0; while [ $i -lt 400 ]; do echo $((i % 2)) >\"$pin\"; i=$((i+1)); done\n"
                "$VBOARD control journal --json\n");
    auto journal = nlohmann::json::parse(Printed(outcome));
    ASSERT_EQ(journal["entries"].size(), 400U);
    EXPECT_EQ(journal["entries"][398]["facts"]["text"], "0");
    EXPECT_EQ(journal["entries"][399]["facts"]["text"], "1");
    EXPECT_GT(Printed(outcome).size(), 65536U);
}

}  // namespace
}  // namespace vboard_test
