// The command table as a whole: every exported operation is reached, every command has its help.
#include <fstream>
#include <set>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;

// Exported operations of the two families; what HAL libraries call back is not for operators.
std::set<std::string> ExportedOperations()
{
    std::set<std::string> names;
    std::ifstream map(ORBLINK_SOURCE "/cmake/liborblink.map");
    for (std::string word; map >> word;)
        if (word.starts_with("ORBLINK_") || word.starts_with("ETHPHY_"))
            names.insert(word.substr(0, word.find(';')));
    return names;
}

nlohmann::json CommandTable()
{
    const auto r = OnBoard("no_devices", {"ctl help --json"});
    return Json(r[0])["commands"];
}

TEST(Grammar, ReachesEveryExportedOperation)
{
    std::set<std::string> reached;
    for (const auto& command : CommandTable())
        for (const auto& operation : command["operations"])
            reached.insert(operation.get<std::string>());
    for (const auto& operation : ExportedOperations())
        EXPECT_EQ(reached.count(operation), 1U) << operation << " is not reached";
    EXPECT_GT(ExportedOperations().size(), 70U);
}

TEST(Grammar, NamesOnlyOperationsThatExist)
{
    std::ifstream map(ORBLINK_SOURCE "/cmake/liborblink.map");
    std::set<std::string> exported;
    for (std::string word; map >> word;)
        exported.insert(word.substr(0, word.find(';')));
    for (const auto& command : CommandTable())
        for (const auto& operation : command["operations"])
            EXPECT_EQ(exported.count(operation), 1U) << operation;
}

TEST(Grammar, HelpNamesEveryCommandAndOption)
{
    const auto r =
        OnBoard("no_devices", {"ctl --help", "ctl help port", "ctl port --help",
                               "ctl help nonsense", "ctl --version", "ctl help port 0:1 vlan",
                               "ctl help tagging", "ctl help VID", "ctl help --unlock",
                               "ctl help --vlan", "ctl help port vlan", "ctl help port nonsense"});
    EXPECT_THAT(r[0], Succeeds());
    for (const auto& command : CommandTable())
        EXPECT_THAT(r[0].out, HasSubstr("  " + command["synopsis"].get<std::string>()));
    EXPECT_EQ(r[1].out, r[2].out);
    EXPECT_THAT(r[1].out, testing::StartsWith("Ports:\n  port "));
    EXPECT_THAT(r[1].out, HasSubstr("\n\nVLANs and bridging:\n  port PORT vlan "));
    EXPECT_THAT(r[5].out, HasSubstr("orblinkctl port PORT vlan VID\n"
                                    "    set the VLAN of a LAN port\n"));
    EXPECT_THAT(r[5].out, HasSubstr("    VID                       1 to 4094\n"));
    EXPECT_THAT(r[6].out, HasSubstr("orblinkctl port PORT tagging TAGGING\n"));
    EXPECT_THAT(r[7].out, HasSubstr("orblinkctl mac-vlan add PORT MAC VID\n"));
    EXPECT_THAT(r[8].out, HasSubstr("    --unlock "));
    EXPECT_THAT(r[9].out, HasSubstr("    --vlan VID "));
    EXPECT_EQ(r[10].out, r[5].out);
    EXPECT_EQ(r[3].code, 2);
    EXPECT_EQ(r[11].code, 2);
    EXPECT_THAT(r[4], Prints("orblinkctl 0.1.0\n"));
}

TEST(Grammar, EachMissingWordIsUseful)
{
    const auto r = OnBoardUp("one_switch", {"ctl",
                                            "ctl switch",
                                            "ctl port",
                                            "ctl vlan",
                                            "ctl mac",
                                            "ctl mac-vlan",
                                            "ctl bridge-mode",
                                            "ctl igmp",
                                            "ctl mtu",
                                            "ctl led",
                                            "ctl aging",
                                            "ctl phy",
                                            "ctl board",
                                            "ctl qos",
                                            "ctl reg",
                                            "ctl smi",
                                            "ctl ioctl",
                                            "ctl mdio",
                                            "ctl mmd",
                                            "ctl port 1",
                                            "ctl port 1 speed",
                                            "ctl switch 0"});
    for (const auto& outcome : r) {
        EXPECT_THAT(outcome, Succeeds());
        EXPECT_FALSE(outcome.out.empty()) << outcome.command;
    }
}

TEST(Grammar, AnUnknownWordIsAnsweredWithThoseThatFit)
{
    const auto r = OnBoard("no_devices", {"ctl bogus", "ctl port 2 mirorr", "ctl qos 0"});
    EXPECT_EQ(r[0].code, 2);
    EXPECT_THAT(r[0].err, HasSubstr("unexpected 'bogus': expected init, show, "));
    EXPECT_EQ(r[1].code, 2);
    EXPECT_THAT(r[0].err, testing::Not(HasSubstr("did you mean")));
    EXPECT_THAT(r[1].err, HasSubstr("unexpected 'mirorr' after 'port 2': expected link, "));
    EXPECT_THAT(r[1].err, testing::EndsWith("; did you mean 'mirror'?\n"));
    EXPECT_THAT(r[1].err, HasSubstr(" mirror, "));
    EXPECT_THAT(r[2], Refuses(2, "incomplete after 'qos 0': expected wred, global-wred, reserve"));
}

}  // namespace
}  // namespace onboard
