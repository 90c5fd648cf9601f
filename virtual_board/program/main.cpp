#include <CLI/CLI.hpp>
#include <cstdio>

#include "virtual_board/program/control_command.h"
#include "virtual_board/program/exec_command.h"
#include "virtual_board/program/run_command.h"
#include "virtual_board/program/verbs.h"

namespace {

constexpr int kExitUsage = 2;

void AddRunCommand(CLI::App& program, std::function<int()>& run)
{
    auto options = std::make_shared<vboard::RunOptions>();
    auto* verb = program.add_subcommand("run", "run a command against a virtual board");
    verb->add_option("--board", options->boardFile, "the board's TOML file")->required();
    verb->add_option("--time-scale", options->timeScale,
                     "length of the command's sleep() and usleep(): 0.001 = a thousandth")
        ->check(CLI::Range(0.000001, 1000.0));
    verb->add_option("--socket", options->socketPath, "where the board listens");
    verb->add_option("--ports", options->ports, "tap: the switch ports are TAP interfaces")
        ->check(CLI::IsMember({"tap", "none"}));
    verb->add_option("--lib-dir", options->libraryDirs,
                     "directory with the preloaded library of one ABI; may be given twice");
    verb->add_option("command", options->command, "after --: the command and its arguments")
        ->required();
    verb->final_callback([options, &run] { run = [=] { return vboard::RunCommand(*options); }; });
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App program{"A board with switches and PHYs that programs run against, and its control."};
    program.name("orblink-vboard");
    std::function<int()> run;
    AddRunCommand(program, run);
    vboard::AddControlCommand(program, run);
    vboard::AddExecCommand(program, run);
    vboard::RequireVerb(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : kExitUsage;
    }
    return run();
}
