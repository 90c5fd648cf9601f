// What "explain" says of a way is what frames meet on it: each cause is set, a frame is sent and
// missed or found changed, the command that the verdict ends with is run, and the frame arrives.
#include <algorithm>

#include "tests/virtual_board/cables/traffic.h"

namespace traffic {
namespace {

using testing::Contains;
using testing::Not;

const std::string kEverybody = "ffffffffffff";
const std::string kA = "020000000001";
const std::string kB = "020000000002";
const std::string kPlain = Frame(kEverybody, kA);

struct Case {
    const char* name;
    // What is done to the board.
    std::string cause;
    // The frame that host a sends, and how it should reach host b.
    std::string frame;
    std::string expected;
    const char* subject;
    const char* effect;
    // A piece of the sentence.
    const char* text;
    // The whole command; "" for one that is no command of this program.
    const char* next;
    // How the board is brought back where the next step is not a command.
    std::string mended = {};
};

const Case kCases[] = {
    {"InReset", "ctl down 0", kPlain, kPlain, "switch 0", "stops", "is in reset",
     "orblinkctl up 0"},
    {"SenderDisabled", "ctl port 0:1 disable", kPlain, kPlain, "port 0:1", "stops", "is disabled",
     "orblinkctl port 0:1 enable"},
    {"ReceiverDisabled", "ctl port 0:2 disable", kPlain, kPlain, "port 0:2", "stops", "is disabled",
     "orblinkctl port 0:2 enable"},
    {"SenderSendsATestPattern", "ctl port 0:1 test-mode waveform", kPlain, kPlain, "port 0:1",
     "stops", "test pattern waveform", "orblinkctl port 0:1 test-mode off"},
    {"ReceiverSendsATestPattern", "ctl port 0:2 test-mode distortion", kPlain, kPlain, "port 0:2",
     "stops", "test pattern distortion", "orblinkctl port 0:2 test-mode off"},
    {"SenderUnderVerification", "ctl port 0:1 dvt line-loopback", kPlain, kPlain, "port 0:1",
     "stops", "verification test line-loopback", "orblinkctl port 0:1 dvt off"},
    {"ReceiverUnderVerification", "ctl port 0:2 dvt packets", kPlain, kPlain, "port 0:2", "stops",
     "verification test packets", "orblinkctl port 0:2 dvt off"},
    {"SenderWithoutACable", "orblink-vboard control link sw0:1 down", kPlain, kPlain, "port 0:1",
     "stops", "no link: no cable", "", "orblink-vboard control link sw0:1 up"},
    {"ReceiverWithoutACable", "orblink-vboard control link sw0:2 down", kPlain, kPlain, "port 0:2",
     "stops", "no link: no cable", "", "orblink-vboard control link sw0:2 up"},
    {"BrokenFrames", "orblink-vboard control wire sw0:1 --fcs-errors 100%; send a " + kPlain,
     kPlain, kPlain, "port 0:1", "changes", "broken frames came in", "",
     "orblink-vboard control wire sw0:1"},
    {"AnotherVlan", "ctl port 0:2 vlan 100", kPlain, kPlain, "port 0:2", "stops",
     "is in VLAN 100, frames come from VLAN 1", "orblinkctl port 0:2 vlan 1"},
    {"AnotherGroup", "ctl port 0:1 group 5 --lock; ctl port 0:2 group 6 --lock", kPlain, kPlain,
     "port 0:2", "stops", "is in group 6, frames come from group 5",
     "orblinkctl port 0:2 group 5 --lock"},
    {"OnlyTheSenderInAGroup", "ctl port 0:1 group 5 --lock", kPlain, kPlain, "port 0:1", "stops",
     "is in a group, the other port is in none", "orblinkctl port 0:1,0:2 group none --lock"},
    {"OnlyTheReceiverInAGroup", "ctl port 0:2 group 5 --lock", kPlain, kPlain, "port 0:2", "stops",
     "is in a group, the other port is in none", "orblinkctl port 0:1,0:2 group none --lock"},
    {"Isolated", "ctl smi 0 0x110 1", kPlain, kPlain, "switch 0", "stops", "isolated",
     "orblinkctl port 0:1,0:2 group 1 --lock"},
    {"FramesThatWereTooLong", "ctl mtu 0 600; send a " + Frame(kEverybody, kA, "", 900),
     Frame(kEverybody, kA, "", 900), Frame(kEverybody, kA, "", 900), "switch 0", "changes",
     "were longer than the MTU", "orblinkctl mtu 0 10240"},
    {"MappedIntoAVlan", "ctl mac-vlan add 0:1 02:00:00:00:00:01 77", kPlain, kPlain, "port 0:1",
     "changes", "are put into VLAN 77 instead of 1",
     "orblinkctl mac-vlan remove 0:1 02:00:00:00:00:01 --mask 0xfff"},
    {"TaggedForAnotherVlan", "send a " + Frame(kEverybody, kA, "81000037"),
     Frame(kEverybody, kA, "81000037"), kPlain, "port 0:1", "changes",
     "with the tag of a VLAN other than 1", "", "ctl port 0:1 vlan 55; ctl port 0:2 vlan 55"},
    {"ACustomerPort", "ctl bridge-mode 0 provider", Frame(kEverybody, kA, "81000001"), kPlain,
     "port 0:1", "changes", "tags that a host sends are data", "orblinkctl bridge-mode 0 off"},
    {"AnotherTagType", "ctl bridge-mode 0 provider; ctl port 0:1 tagging tagged",
     Frame(kEverybody, kA, "81000001"), kPlain, "port 0:1", "changes",
     "tags of type 0x8100 are not recognised", "orblinkctl bridge-mode 0 on 0x8100"},
    {"TaggedOnTheWayOut", "ctl port 0:2 tagging tagged", kPlain, kPlain, "port 0:2", "changes",
     "frames leave with a tag", "orblinkctl port 0:2 tagging untagged"},
    {"AStaticEntry", "ctl mac add 0:3 02:00:00:00:00:02 1", Frame(kB, kA), Frame(kB, kA),
     "switch 0", "changes", "go to port 0:3 only", "orblinkctl mac remove 0:3 02:00:00:00:00:02 1"},
    {"EarlyDetection", "ctl qos 0 global-wred 1 0 100 0 0 0 0 0 0", kPlain, kPlain, "port 0:2",
     "stops", "early detection discards every frame",
     "orblinkctl qos 0 global-wred 0 4 100 4095 4095 4095 4095 4095 4095"},
};

void PrintTo(const Case& given, std::ostream* out)
{
    *out << given.name;
}

std::string HeardOnce(const std::string& frame, const std::string& copy)
{
    return "hear b; send a " + frame + "; sleep 10; heard b; cp $S/b.pcap $S/" + copy + ".pcap\n";
}

// A way that is open again: hosts on a busy machine take a while to see it.
std::string HeardInTheEnd(const std::string& frame, const std::string& expected,
                          const std::string& copy)
{
    return "hear b; for n in $(seq 25); do send a " + frame +
           "; sleep 2; od -An -v -tx1 $S/b.pcap | tr -d ' \\n' | grep -q " + expected +
           " && break; done; heard b; cp $S/b.pcap $S/" + copy + ".pcap\n";
}

const nlohmann::json* Find(const nlohmann::json& model, const Case& given)
{
    for (const auto& cause : model["causes"])
        if (cause["subject"] == given.subject && cause["effect"] == given.effect &&
            std::string(cause["text"]).find(given.text) != std::string::npos)
            return &cause;
    return nullptr;
}

class Explain : public Traffic, public testing::WithParamInterface<Case> {};

TEST_P(Explain, SaysWhatFramesMeet)
{
    const Case& given = GetParam();
    const std::string mend =
        *given.next != '\0' ? std::string(given.next) + " >/dev/null" : given.mended;
    Run("orblinkctl explain 0:1 0:2 --json >$S/open.json\n" + given.cause + "\n" +
        HeardOnce(given.frame, "before") +
        "orblinkctl explain 0:1 0:2 --json >$S/caused.json || [ $? = 1 ]\n" + mend + "\n" +
        "until orblinkctl port 0:2 link | grep -q yes; do sleep 0.05; done\n" +
        // The hosts hear of their carrier a moment later.
        "until orblinkctl port 0:1 link | grep -q yes; do sleep 0.05; done; sleep 10\n" +
        HeardInTheEnd(given.frame, given.expected, "after"));
    EXPECT_EQ(Find(Json("open.json"), given), nullptr) << "is said of a way that is open";
    const auto model = Json("caused.json");
    const auto* cause = Find(model, given);
    ASSERT_NE(cause, nullptr) << model.dump(2);
    if (*given.next != '\0') {
        EXPECT_EQ((*cause)["next"], given.next);
    }
    EXPECT_EQ(model["verdict"] == "stopped", given.effect == std::string("stops"));
    EXPECT_THAT(Frames("before"), Not(Contains(FromHex(given.expected))));
    EXPECT_THAT(Frames("after"), Contains(FromHex(given.expected)));
}

INSTANTIATE_TEST_SUITE_P(Causes, Explain, testing::ValuesIn(kCases),
                         [](const auto& given) { return given.param.name; });

// A mirror stops nothing; somebody sees what is not meant for him.
TEST_F(Traffic, ExplainNamesTheMirror)
{
    Run("ctl port 0:3 mirror 0:2\n"
        "orblinkctl explain 0:1 0:2 --json >$S/mirror.json\n"
        "hear b; send c " +
        Frame(kA, "020000000003") + "; heard b\n");
    const auto causes = Json("mirror.json")["causes"];
    const bool named = std::any_of(causes.begin(), causes.end(), [](const auto& cause) {
        return cause["next"] == "orblinkctl port 0:3 mirror off";
    });
    EXPECT_TRUE(named) << causes.dump(2);
    EXPECT_THAT(Frames("b"), Contains(FromHex(Frame(kA, "020000000003"))));
}

}  // namespace
}  // namespace traffic
