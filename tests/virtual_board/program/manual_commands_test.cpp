// Runs every command of docs/virtual-board.md: its blocks as they stand, the verbs of its table of
// `control` with each of their options and words.

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <vector>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;

constexpr char kLan[] = ORBLINK_SOURCE "/tests/virtual_board/cables/lan.toml";

std::string Manual()
{
    std::ifstream file{ORBLINK_SOURCE "/docs/virtual-board.md"};
    return {std::istreambuf_iterator<char>{file}, {}};
}

bool HostsAreAllowed()
{
    return Shell(std::string("$RUN --board ") + kLan + " -- true").status == 0;
}

std::vector<std::string> Blocks()
{
    static const std::regex kBlock{"\n```\n([^`]*)```\n"};
    const std::string manual = Manual();
    std::vector<std::string> blocks;
    for (std::sregex_iterator block{manual.begin(), manual.end(), kBlock}, end; block != end;
         ++block)
        blocks.push_back((*block)[1]);
    return blocks;
}

// Of the one block that holds the text.
Outcome RunBlock(const std::string& text, const std::string& socket = "")
{
    std::string found;
    for (const std::string& block : Blocks())
        if (block.find(text) != std::string::npos)
            found += block;
    EXPECT_NE(found, "") << text;
    if (!socket.empty()) {
        found = std::regex_replace(found, std::regex{"/run/gateway.sock"}, socket);
        // Nobody types as fast as a script runs.
        found = std::regex_replace(found, std::regex{" &\n"},
                                   " &\nuntil test -S " + socket + "; do sleep 0.05; done\n");
        found += "kill $!; wait $!\n";
    }
    // Three seconds of reset are as good in a tenth.
    found =
        std::regex_replace(found, std::regex{"(run|serve) --board"}, "$1 --time-scale 0.1 --board");
    return Shell("cd " ORBLINK_SOURCE "; PATH=$(dirname $VBOARD):$PATH; set -e\n" + found);
}

TEST(ManualCommands, HasNoBlockThatIsNotRunHere)
{
    EXPECT_EQ(Blocks().size(), 4U) << "the synopsis, and one block for each of the tests below";
}

TEST(ManualCommands, TheFirstExampleWorks)
{
    auto outcome = RunBlock("orblinkctl up 0 --defaults");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("switch family: 2 found\n"), HasSubstr("switch 0: state enabled\n"),
                      HasSubstr("chip: VS08\n")));
}

TEST(ManualCommands, ASharedBoardWorks)
{
    auto outcome = RunBlock("/run/gateway.sock", TemporaryPath("gateway.sock"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("switch family: 2 found\n"),
                                      HasSubstr("switch 0: never brought up, 8 ports\n"),
                                      HasSubstr("board: two switches\n")));
}

TEST(ManualCommands, HostsReachEachOther)
{
    if (!HostsAreAllowed())
        GTEST_SKIP() << "hosts are not allowed here";
    auto outcome = RunBlock("exec a -- ping");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("bytes from 10.0.0.2"), HasSubstr("02:00:00:00:00:02")));
}

// The rows of the table of `control`, as they are written.
std::vector<std::string> Rows()
{
    const std::string manual = Manual();
    const size_t start = manual.find("\n## Control\n");
    const std::string part = manual.substr(start, manual.find("\n## Faults\n") - start);
    static const std::regex kRow{"\n\\| `([^`]+)`"};
    std::vector<std::string> rows;
    for (std::sregex_iterator row{part.begin(), part.end(), kRow}, end; row != end; ++row)
        rows.push_back(std::regex_replace((*row)[1].str(), std::regex{"\\\\\\|"}, "|"));
    return rows;
}

// What stands for the words in capitals.
std::string Meant(const std::string& verb, const std::string& word)
{
    static const std::map<std::string, std::string> kWords = {
        {"DEVICE", "sw0"},
        {"KIND", "mdio"},
        {"N", "3"},
        {"MAC", "02:00:00:00:00:77"},
        {"VID", "7"},
        {"P", "1%"},
        {"T", "10ms"},
        {"FILE", TemporaryPath("port.pcapng")},
        {"FRAME", "ffffffffffff02000000000188b5"},
        {"fault NAME", "mdio-error"},
        {"fault VALUE", "ENXIO"},
        {"counter NAME", "etherStatsPkts"},
        {"counter VALUE", "5"},
    };
    for (const std::string& key : {word, verb + " " + word})
        if (const auto found = kWords.find(key); found != kWords.end())
            return found->second;
    EXPECT_FALSE(std::regex_match(word, std::regex{"[A-Z]+"})) << "what is " << word << "?";
    return word;
}

// One of the commands that a row stands for: no option, or one; each choice has its turn with each.
std::string Command(const std::string& row, size_t option, size_t turn)
{
    std::string words;
    size_t options = 0;
    std::smatch match;
    std::string rest = row;
    while (std::regex_search(rest, match, std::regex{" ?\\[([^\\]]*)\\]"})) {
        words += match.prefix();
        if (++options == option)
            words += " " + match[1].str();
        rest = match.suffix();
    }
    words += rest;
    const std::string verb = row.substr(0, row.find(' '));
    std::string command;
    static const std::regex kWord{"[^ ]+"};
    for (std::sregex_iterator word{words.begin(), words.end(), kWord}, end; word != end; ++word) {
        std::vector<std::string> choices;
        static const std::regex kChoice{"[^|]+"};
        const std::string text = word->str();
        for (std::sregex_iterator choice{text.begin(), text.end(), kChoice}; choice != end;
             ++choice)
            choices.push_back(choice->str());
        command += (command.empty() ? "" : " ") + Meant(verb, choices[turn % choices.size()]);
        turn /= choices.size();
    }
    return command;
}

std::set<std::string> CommandsOf(const std::string& row)
{
    const auto options = static_cast<size_t>(std::ranges::count(row, '['));
    constexpr size_t kMostChoices = 8;  // up or down, at four speeds
    std::set<std::string> commands;
    for (size_t option = 0; option <= options; ++option)
        for (size_t turn = 0; turn < kMostChoices; ++turn)
            commands.insert(Command(row, option, turn));
    return commands;
}

// The LAN ports of the chip have no 2.5 Gb/s; only verbs of cables need hosts.
int ExpectedCode(const std::string& command, bool hosts)
{
    if (command.ends_with("up --speed 2500"))
        return 3;
    const std::string verb = command.substr(0, command.find(' '));
    const bool ofCables = verb == "hosts" || verb == "wire" || verb == "capture" || verb == "trace";
    return ofCables && !hosts ? 5 : 0;
}

// A capture goes on until it is told to end, and can be told once it has its file. Not by timeout, which
// sends SIGCONT as well: the leak checker at a program's end waits for ever where that meets its own
// SIGSTOP.
std::string Lines(const std::string& command)
{
    const std::string line = "$VBOARD control " + command + " >/dev/null 2>&1";
    if (!command.starts_with("capture"))
        return line + "\n";
    const std::string file = Meant("capture", "FILE");
    return "rm -f " + file + "\n" + line + " &\nwhile kill -0 $! 2>/dev/null && ! test -e " + file +
           "; do sleep 0.02; done\nsleep 0.3\nkill $! 2>/dev/null\nwait $!\n";
}

class Verbs : public testing::TestWithParam<std::string> {};

TEST_P(Verbs, TakeEachOfTheirOptions)
{
    const bool hosts = HostsAreAllowed();
    std::string script = "sleep 0.05\n";  // the chips take 20 ms from power-on
    std::string expected;
    for (const std::string& command : CommandsOf(GetParam())) {
        script += Lines(command) + "echo \"$? " + command + "\"\n";
        expected += std::to_string(ExpectedCode(command, hosts)) + " " + command + "\n";
    }
    const std::string path = TemporaryPath("commands");
    std::ofstream{path} << script;
    auto outcome = Shell(std::string("$RUN --board ") +
                         (hosts ? kLan : "$BOARDS/two_switches.toml") + " -- sh " + path);
    EXPECT_EQ(Printed(outcome), expected);
}

INSTANTIATE_TEST_SUITE_P(OfControl, Verbs, testing::ValuesIn(Rows()), [](const auto& test) {
    return test.param.substr(0, test.param.find(' ')) + "_" + std::to_string(test.index);
});

TEST(ManualCommands, HaveTheWholeTableOfControl)
{
    EXPECT_EQ(Rows().size(), 15U);
    EXPECT_THAT(CommandsOf(Rows()[3]), Contains("link sw0:2 up --speed 2500"));
}

}  // namespace
}  // namespace vboard_test
