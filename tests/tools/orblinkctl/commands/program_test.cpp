// Batches, completion, the manual page and what a start costs.
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <sstream>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;

TEST(Batch, StopsAtTheFirstFailureAndNamesTheLine)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '# a comment\\nport 1 vlan 5\\n\\nport 1 vlan 4095\\nport 1 pcp 3\\n' >b; "
         "ctl batch b",
         "ctl batch b --keep-going", "ctl port 1 vlan -o kv | grep pcp",
         "printf 'port 1:1 vlan 5\\nbatch b\\n' | ctl batch --keep-going",
         "printf 'port 1 vlan 7 # behind a command\\n' | ctl batch -", "ctl batch absent"});
    EXPECT_EQ(r[0].code, 2);
    EXPECT_EQ(r[0].out, "port 0:1: vlan 5\n");
    EXPECT_EQ(r[0].err, "orblinkctl: b:4: bad VID '4095': allowed is 1 to 4094\n");
    EXPECT_EQ(r[1].code, 2);
    EXPECT_EQ(r[1].out, "port 0:1: vlan 5\nport 0:1: pcp 3\n");
    EXPECT_EQ(r[1].err, r[0].err);
    EXPECT_THAT(r[2], Prints("ports.0.pcp=3\n"));
    EXPECT_EQ(r[3].code, 3);
    EXPECT_EQ(r[3].err,
              "orblinkctl: stdin:1: no switch 1: the board has 1: orblinkctl switch\n"
              "orblinkctl: stdin:2: a batch cannot run another one\n");
    EXPECT_THAT(r[4], Prints("port 0:1: vlan 7\n"));
    EXPECT_THAT(r[5], Refuses(2, "absent: No such file or directory"));
}

TEST(Batch, HandsItsOptionsToItsLines)
{
    const auto r = OnBoardUp("one_switch", {"echo 'port 1 mirror' | ctl -o kv batch"});
    EXPECT_THAT(r[0], Prints("schema=2\nports.0.switch=0\nports.0.port=1\n"
                             "ports.0.mirror_to=null\n"));
}

// What makes a batch fast: its lines share one start and one attachment to the board.
TEST(Batch, LoadsTheHalOnceForAllItsLines)
{
    const auto r = OnBoardUp(
        "one_switch", {"for i in $(seq 500); do echo port 1 vlan 5; echo port 1 vlan 6; done >b",
                       "LD_DEBUG=files ctl batch b 2>&1 >/dev/null | "
                       "grep -c 'liborblink_velmar.so.*generating link map'",
                       "for i in 5 6; do LD_DEBUG=files ctl port 1 vlan $i; done 2>&1 >/dev/null | "
                       "grep -c 'liborblink_velmar.so.*generating link map'"});
    EXPECT_EQ(r[1].out, "1\n");
    EXPECT_EQ(r[2].out, "2\n");
}

TEST(Completion, OffersWhatTheTableHas)
{
    std::vector<std::string> commands = {"ctl help --json"};
    const auto table = Json(OnBoard("no_devices", commands)[0])["commands"];
    std::map<std::string, std::vector<std::string>> expected;  // of each line
    for (const auto& command : table) {
        std::vector<std::string> words;
        std::istringstream synopsis(command["synopsis"].get<std::string>());
        for (std::string word; synopsis >> word && word[0] >= 'a' && word[0] <= 'z';)
            words.push_back(word);
        if (words.empty())
            continue;
        std::string line = "ctl --complete";
        for (size_t i = 0; i + 1 < words.size(); ++i)
            line += " " + words[i];
        expected[line + " ''"].push_back(words.back());
    }
    commands.clear();
    for (const auto& [line, words] : expected)
        commands.push_back(line);
    size_t offered = 0;
    for (const auto& outcome : OnBoard("no_devices", commands))
        for (const auto& word : expected[outcome.command]) {
            EXPECT_THAT("\n" + outcome.out, HasSubstr("\n" + word + "\n")) << outcome.command;
            ++offered;
        }
    EXPECT_GT(offered, 80U);
}

TEST(Completion, OffersValuesAndOptions)
{
    const auto r =
        OnBoard("no_devices", {"ctl --complete port 0:1 speed 10", "ctl --complete mac --v",
                               "ctl --complete up 0 --d", "ctl --complete -o ''",
                               "ctl --complete port 0:1 vl", "ctl --complete -o json po"});
    EXPECT_THAT(r[0], Prints("10\n100\n1000\n10000\n"));
    EXPECT_THAT(r[1], Prints("--vlan\n--version\n"));
    EXPECT_THAT(r[2], Prints("--defaults\n"));
    EXPECT_THAT(r[3], Prints("text\njson\nkv\n"));
    EXPECT_THAT(r[4], Prints("vlan\n"));
    EXPECT_THAT(r[5], Prints("port\n"));
}

// What stands at the prompt of the real shell after a tab behind each of four lines. No board is
// needed, and without one a shell reads its many files faster.
std::string AtThePrompt(const std::string& shell, const std::string& setup)
{
    const Scratch scratch;
    const std::string line =
        "cd " + scratch.Path("") +
        " && export HOME=$PWD PATH=$ORBLINK_BUILD/bin:$PATH && "
        "printf '%s\\n' 'orblinkctl port 0:1 vl' 'orblinkctl port 1:7 spe' "
        "'orblinkctl config sav' 'orblinkctl config apply typ' | timeout 60 zsh -f " ORBLINK_SOURCE
        "/tests/tools/orblinkctl/line/typed.zsh '" +
        setup + "; echo rea\"\"dy' " + shell + " >out 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0);
    return scratch.Read("out");
}

const char kCompleted[] =
    "orblinkctl port 0:1 vlan \norblinkctl port 1:7 speed \norblinkctl config save \n"
    "orblinkctl config apply typed \n";

TEST(Completion, WorksAtThePromptOfBash)
{
    EXPECT_EQ(AtThePrompt("bash --norc -i",
                          "eval \"$(orblinkctl completion bash)\"; "
                          "show() { echo \"$READLINE_LINE\" >>typed; "
                          "READLINE_LINE=; }; bind -x \"\\\"\\C-t\\\":show\""),
              kCompleted);
    const auto r = OnBoard(
        "no_devices",
        {"bash -c 'eval \"$(orblinkctl completion bash)\"; COMP_LINE=\"orblinkctl port 1:\"; "
         "COMP_POINT=18; _orblinkctl; echo \"${COMPREPLY[@]}\"'"});
    EXPECT_THAT(r[0], Prints("0 1 2 3 4 5 6 7\n"));
}

TEST(Completion, WorksAtThePromptOfZsh)
{
    EXPECT_EQ(AtThePrompt("zsh -f -i",
                          "autoload -Uz compinit; compinit -u -D; "
                          "eval \"$(orblinkctl completion zsh)\"; "
                          "show() { print -r -- $BUFFER >>typed; BUFFER= }; "
                          "zle -N show; bindkey \"^T\" show"),
              kCompleted);
}

TEST(Completion, WorksInFish)
{
    const auto r =
        OnBoard("no_devices",
                {"touch typed; HOME=$PWD timeout 60 fish -c 'orblinkctl completion fish | source; "
                 "for line in \"port 0:1 vl\" \"port 1:\" \"config sav\" \"mac --vl\" \"config "
                 "apply typ\"; "
                 "complete -C \"orblinkctl $line\"; end'"});
    EXPECT_THAT(r[0],
                Prints("vlan\n1:0\n1:1\n1:2\n1:3\n1:4\n1:5\n1:6\n1:7\nsave\n--vlan\ntyped\n"));
}

TEST(Completion, TakesTheWordsBehindHelpAndFurtherSettings)
{
    const auto r =
        OnBoard("no_devices", {"ctl completion tcsh", "ctl --complete port 0:1 vlan 7 tag",
                               "ctl --complete help port 0:1 vl"});
    EXPECT_THAT(r[0], Refuses(2, "bad SHELL 'tcsh': allowed is bash, zsh or fish"));
    EXPECT_THAT(r[1], Prints("tagging\n"));
    EXPECT_THAT(r[2], Prints("vlan\n"));
}

std::string Roff(const std::string& text)
{
    std::string out;
    for (const char c : text)
        out += c == '-' ? "\\-" : std::string(1, c);
    return out;
}

// Lines that were broken to keep them short, in one.
std::string Unbroken(const std::string& manual)
{
    return std::regex_replace(std::regex_replace(manual, std::regex{"\n"}, " "),
                              std::regex{R"(\\&)"}, "");
}

TEST(Manual, NamesEveryCommandOptionAndExitCode)
{
    const auto r = OnBoard("no_devices", {"ctl help --json", "ctl manual", "ctl --help"});
    const std::string manual = Unbroken(r[1].out);
    const auto table = Json(r[0]);
    for (const auto& command : table["commands"]) {
        const auto synopsis = command["synopsis"].get<std::string>();
        EXPECT_THAT(manual,
                    HasSubstr(".B orblinkctl" + Roff(synopsis.empty() ? "" : " " + synopsis) + " " +
                              Roff(command["summary"].get<std::string>()) + " "));
        for (const auto& option : command["options"])
            EXPECT_THAT(manual, HasSubstr(" " + Roff(option.get<std::string>()) + ": "));
    }
    for (const char* code : {"0", "1", "2", "3", "4", "5", "6", "7", "9"}) {
        EXPECT_THAT(manual, HasSubstr(std::string(".B ") + code + " "));
        EXPECT_THAT(r[2].out, HasSubstr(code));
    }
}

// Instructions from the start of a program to its end, those of the loader included: the same in
// every run, however busy the machine is.
double InstructionsOf(const std::string& command)
{
    const Scratch scratch;
    const std::string log = scratch.Path("log");
    const std::string line =
        "valgrind --tool=callgrind --callgrind-out-file=" + scratch.Path("profile") +
        " --log-file=" + log + " " + command + " >/dev/null";
    EXPECT_EQ(std::system(line.c_str()), 0) << scratch.Read("log");
    const std::string text = scratch.Read("log");
    const std::string mark = "Collected : ";
    const size_t at = text.find(mark);
    if (at == std::string::npos) {
        ADD_FAILURE() << "no count of instructions:\n" << text;
        return 0;
    }
    return std::stod(text.substr(at + mark.size()));
}

TEST(Start, TakesFewInstructionsMoreThanLoadingTheLibraries)
{
#ifndef NDEBUG
    GTEST_SKIP() << "only an optimised program is measured";
#endif
    const std::string build = std::getenv("ORBLINK_BUILD");
    const std::string baseline = build + "/tests/start_baseline";
    if (access(baseline.c_str(), X_OK) != 0)
        GTEST_SKIP() << "a program with sanitizers is not measured";
    const double alone = InstructionsOf(baseline);
    const double whole = InstructionsOf(build + "/bin/orblinkctl --version");
    RecordProperty("baseline_instructions", std::to_string(alone));
    RecordProperty("version_instructions", std::to_string(whole));
    EXPECT_GT(alone, 50'000);
    // What is more than the baseline's is the loader's as well: the C++ runtime library within.
    EXPECT_LE(whole, 2.8 * alone);
}

}  // namespace
}  // namespace onboard
