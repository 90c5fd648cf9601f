// Replays docs/tour.md: every command of its console blocks, with the output that it shows.
#include <fstream>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

struct Shown {
    std::string command;
    std::string output;
};

std::vector<Shown> ConsoleBlocks(const std::string& path)
{
    std::vector<Shown> shown;
    std::ifstream file(path);
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("```"))
            inside = line == "```console";
        else if (inside && line.starts_with("$ "))
            shown.push_back({line.substr(2), ""});
        else if (inside && !shown.empty())
            shown.back().output += line + "\n";
    }
    return shown;
}

TEST(Tour, ShowsWhatTheProgramPrints)
{
    const auto shown = ConsoleBlocks(ORBLINK_SOURCE "/docs/tour.md");
    ASSERT_GT(shown.size(), 20U);
    std::vector<std::string> commands;
    for (const auto& step : shown)
        commands.push_back("export LC_ALL=C.UTF-8; { " + step.command + "\n} 2>&1");
    const auto outcomes = OnBoard(ORBLINK_SOURCE "/tools/demo_board.toml", commands);
    for (size_t i = 0; i < shown.size(); ++i)
        EXPECT_EQ(outcomes[i].out, shown[i].output) << shown[i].command;
}

}  // namespace
}  // namespace onboard
