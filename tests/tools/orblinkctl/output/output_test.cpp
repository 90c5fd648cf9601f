// Formats, log lines, and output that cannot be written.
#include <algorithm>
#include <sstream>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(Output, LogLinesComeWithV)
{
    const auto r =
        OnBoard("one_switch", {"ctl init >/dev/null", "ctl -v up 0", "ctl -v -v port 1 vlan 5",
                               "ctl port 1 vlan 6", "ctl -v port 1 vlan 6", "ctl -q ioctl 0 99"});
    EXPECT_THAT(r[0].err, testing::IsEmpty());
    EXPECT_THAT(r[1].err, HasSubstr("liborblink: info: ORBLINK_ResetDisable:"));
    EXPECT_THAT(r[1].err, Not(HasSubstr("liborblink: trace: ")));
    EXPECT_THAT(r[2].err, HasSubstr("liborblink: trace: ORBLINK_SetLanPortVlan:"));
    EXPECT_THAT(r[3], Prints("port 0:1: vlan 6\n"));
    EXPECT_THAT(r[4].err, StartsWith("liborblink: notice: ORBLINK_SetLanPortVlan:"));
    EXPECT_THAT(r[4].err, HasSubstr("Vlan 6 is already set for LanPortIdx=1, DevIdx=0\n"));
    EXPECT_THAT(
        r[5], Refuses(1,
                      "switch 0: the chip's own command was refused: the chip or its HAL refused: "
                      "again with -v shows the log"));
}

TEST(Output, MailboxStoryStaysOutOfTheOutput)
{
    const auto r = OnBoard("one_switch", {"ctl -v init --json"});
    EXPECT_EQ(r[0].code, 0);
    EXPECT_EQ(nlohmann::json::parse(r[0].out)["families"][0]["devices"], 1);
    EXPECT_THAT(r[0].err, HasSubstr("HWMB_"));
}

TEST(Output, FormatsHoldTheSameFacts)
{
    const auto r = OnBoardUp("one_switch", {"ctl port 1 vlan --json", "ctl port 1 vlan -o kv",
                                            "ctl -o json port 1 vlan", "ctl port 1 vlan 5 --json"});
    EXPECT_THAT(r[0], Prints("{\n"
                             "  \"schema\": 2,\n"
                             "  \"ports\": [\n"
                             "    {\n"
                             "      \"switch\": 0,\n"
                             "      \"port\": 1,\n"
                             "      \"label\": null,\n"
                             "      \"role\": \"phy\",\n"
                             "      \"vlan\": 1,\n"
                             "      \"pcp\": 0,\n"
                             "      \"tagging\": \"untagged\",\n"
                             "      \"group\": null,\n"
                             "      \"group_locked\": true\n"
                             "    }\n"
                             "  ]\n"
                             "}\n"));
    EXPECT_THAT(r[1], Prints("schema=2\nports.0.switch=0\nports.0.port=1\nports.0.label=null\n"
                             "ports.0.role=phy\nports.0.vlan=1\nports.0.pcp=0\n"
                             "ports.0.tagging=untagged\nports.0.group=null\n"
                             "ports.0.group_locked=true\n"));
    EXPECT_EQ(r[2].out, r[0].out);
    const auto change = Json(r[3])["changes"];
    ASSERT_EQ(change.size(), 1U);
    EXPECT_EQ(change[0]["object"], "port 0:1");
    EXPECT_EQ(change[0]["setting"], "vlan");
    EXPECT_EQ(change[0]["value"], 5);
    EXPECT_EQ(change[0]["applied"], true);
}

TEST(Output, ErrorsAsJson)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl --json-errors port 9:1", "ctl --json-errors port 1:1",
                                 "ctl --json-errors ioctl 0 99", "ctl --json-errors --zz"});
    const int codes[] = {3, 3, 1, 2};
    for (size_t i = 0; i < r.size(); ++i) {
        EXPECT_EQ(r[i].code, codes[i]);
        const auto error = nlohmann::json::parse(r[i].err);
        EXPECT_EQ(error["schema"], 2);
        EXPECT_EQ(error["error"]["code"], codes[i]);
        EXPECT_TRUE(error["error"]["text"].is_string());
        EXPECT_EQ(error["error"]["log"].size(), i == 2 ? 1U : 0U);
    }
}

TEST(Output, ThatCannotBeWrittenIsAFailure)
{
    const auto r = OnBoardUp("one_switch", {"ctl show >/dev/full", "(ctl show; echo $? >&2) | :",
                                            "(sleep 0.1; ctl show; echo $? >&2) | true"});
    EXPECT_THAT(r[0], Refuses(1, "cannot write the output: No space left on device"));
    // As other programs end behind "| head": by the signal, without a word.
    EXPECT_EQ(r[2].err, "141\n");
}

// Characters of a text in which none is wide.
size_t Characters(const std::string& text)
{
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// One terminal of so many columns for all the views: no line is longer, and nothing that a port has
// is lost but empty columns.
class Terminal : public testing::TestWithParam<size_t> {};

TEST_P(Terminal, HoldsEveryView)
{
    std::string views;
    for (const char* words :
         {"", "port", "switch", "vlan", "phy", "counters", "show", "board", "recover", "doctor",
          "mdio", "explain 0:1 0:4", "top --rounds 1 --interval 0.01",
          "watch 0:1 --rounds 1 --interval 0.01", "help", "help port", "help mac-vlan"})
        views += std::string("orblinkctl --names n.toml ") + words + "; ";
    const auto r = OnBoardUp(
        "two_switches",
        {"printf '[port]\\nlan = \"0:1\"\\n[phy]\\nuplink-to-the-old-building = 0\\n' >n.toml; "
         "LC_ALL=C script -qec 'stty cols " +
         std::to_string(GetParam()) + "; " + views +
         "' /dev/null | tr -d '\\r' | sed 's/\\x1b\\[[0-9;?]*[a-zA-Z]//g'"});
    std::istringstream lines(r[0].out);
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_LE(Characters(line), GetParam()) << line;
        EXPECT_FALSE(line.ends_with(" ")) << "'" << line << "'";
    }
    EXPECT_GT(count, 100U);
    for (const char* part : {"mtu 2000", "verdict: ", "ok: switch lock: free", "q: quit"})
        EXPECT_THAT(r[0].out, HasSubstr(part));
}

INSTANTIATE_TEST_SUITE_P(Widths, Terminal, testing::Values(40, 80, 120));

}  // namespace
}  // namespace onboard
