#include "tests/tools/orblinkctl/on_board.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace onboard {

namespace {

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string BoardFile(const std::string& board)
{
    if (board.find('/') != std::string::npos)
        return board;
    return std::string(ORBLINK_SOURCE "/virtual_board/boards/") + board + ".toml";
}

std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string Script(const Scratch& scratch, const std::vector<std::string>& commands)
{
    const std::string bin = std::string(std::getenv("ORBLINK_BUILD")) + "/bin";
    std::string script = "PATH=" + bin + ":$PATH\n" +
                         "ctl() { orblinkctl \"$@\"; }\n"
                         "board() { orblink-vboard control \"$@\"; }\n"
                         // Real seconds, on a board whose sleeps are a thousandth as long.
                         "sleep() { command sleep $(awk \"BEGIN { print $1 * 1000 }\"); }\n"
                         "cd " +
                         Quoted(scratch.Path("")) + "\n";
    for (size_t i = 0; i < commands.size(); ++i) {
        const std::string file = scratch.Path(std::to_string(i));
        script += "( " + commands[i] + "\n) >" + file + ".out 2>" + file + ".err </dev/null; " +
                  "echo $? >" + file + ".code\n";
    }
    return script;
}

}  // namespace

Scratch::Scratch()
{
    std::string name = "/tmp/orblinkctl-test.XXXXXX";
    path_ = mkdtemp(name.data());
}

Scratch::~Scratch()
{
    std::filesystem::remove_all(path_);
}

void Scratch::Write(const std::string& name, const std::string& text) const
{
    std::ofstream(Path(name)) << text;
}

std::string Scratch::Read(const std::string& name) const
{
    return ReadFile(Path(name));
}

std::vector<Outcome> OnBoard(const std::string& board, const std::vector<std::string>& commands)
{
    const Scratch scratch;
    scratch.Write("script", Script(scratch, commands));
    const std::string vboard = std::string(std::getenv("ORBLINK_BUILD")) + "/bin/orblink-vboard";
    const std::string line = vboard + " run --board " + Quoted(BoardFile(board)) +
                             " --time-scale 0.001 -- sh " + scratch.Path("script") + " 2>" +
                             scratch.Path("board.err");
    const int status = std::system(line.c_str());
    EXPECT_EQ(status, 0) << scratch.Read("board.err");
    std::vector<Outcome> outcomes;
    for (size_t i = 0; i < commands.size(); ++i) {
        const std::string name = std::to_string(i);
        const std::string code = scratch.Read(name + ".code");
        outcomes.push_back({commands[i], code.empty() ? -1 : std::stoi(code),
                            scratch.Read(name + ".out"), scratch.Read(name + ".err")});
    }
    return outcomes;
}

std::vector<Outcome> OnBoardUp(const std::string& board, std::vector<std::string> commands)
{
    commands.insert(commands.begin(),
                    "ctl init && for n in $(ctl switch -o kv | sed -n 's/.*switch=//p'); do "
                    "ctl up $n || exit; done");
    auto outcomes = OnBoard(board, commands);
    EXPECT_THAT(outcomes.front(), Succeeds());
    outcomes.erase(outcomes.begin());
    return outcomes;
}

nlohmann::json Json(const Outcome& outcome)
{
    EXPECT_THAT(outcome, Succeeds());
    const auto json = nlohmann::json::parse(outcome.out, nullptr, false);
    EXPECT_FALSE(json.is_discarded()) << outcome.command << ": " << outcome.out;
    return json;
}

bool NamespacesAreRefused()
{
    const std::string vboard = std::string(std::getenv("ORBLINK_BUILD")) + "/bin/orblink-vboard";
    const std::string line = vboard + " run --isolation namespaces --board " +
                             Quoted(BoardFile("no_devices")) + " -- true 2>/dev/null";
    return std::system(line.c_str()) != 0;
}

Outcome AsRootSeesIt(Outcome outcome)
{
    static const std::regex kHidden{"  processes that only root may look into: [0-9]+\n"};
    if (geteuid() != 0)
        outcome.out = std::regex_replace(outcome.out, kHidden, "");
    return outcome;
}

}  // namespace onboard
