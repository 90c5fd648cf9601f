#include "virtual_board/program/run_command.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>

#include "virtual_board/board/board_server.h"
#include "virtual_board/board/exit_codes.h"
#include "virtual_board/board/virtual_board.h"
#include "virtual_board/cables/lans.h"
#include "virtual_board/cables/network_namespace.h"
#include "virtual_board/description/board_file.h"
#include "virtual_board/program/command_process.h"
#include "virtual_board/program/environment.h"
#include "virtual_board/program/isolation.h"
#include "virtual_board/program/priority.h"
#include "virtual_board/program/runtime_dir.h"
#include "virtual_board/seam/supervisor.h"

namespace vboard {
namespace {

int RunOnBoard(const RunOptions& options, BoardDescription spec)
{
    const Isolation isolation{options.isolation};
    const RuntimeDir directory;
    const std::string path =
        options.socketPath.empty() ? directory.DefaultSocket() : options.socketPath;
    const std::string name = spec.name;
    if (!options.ports.empty())
        spec.tapPorts = options.ports == "tap";
    const bool keepsRights = spec.tapPorts && geteuid() != 0;
    VirtualBoard board{std::move(spec), options.timeScale};
    std::optional<cables::Lans> lans;
    if (board.Description().tapPorts)
        board.Plug(lans.emplace(board.Description(), board.Devices(), board.Clock()));
    if (isolation.GivesNames())
        board.UsePrivateNames(directory.MakeNames());
    BoardServer server{board, path};
    if (options.lowLatency)
        server.KeepProcessorsAwake();
    fprintf(stderr, "orblink-vboard: board \"%s\" at %s%s\n", name.c_str(), path.c_str(),
            isolation.Remark().c_str());
    CommandProcess command{options.command, {options.timeScale != 1, isolation.GivesNames()}, [&] {
                               SetEnvironment(path);
                               if (keepsRights)
                                   cables::KeepRightsAcrossExec();
                           }};
    if (command.WithoutPrivileges() || isolation.LosesRights())
        fprintf(stderr, "%s\n", kPrivilegesAreLost);
    seam::Supervisor supervisor{board, command.TakeListener(), options.timeScale,
                                isolation.GivesNames()};
    server.AddCallers(supervisor);
    GoBeforePrograms();
    server.Run(command.SignalFd(), [&] { return command.HandleSignals(); });
    return command.ExitStatus();
}

}  // namespace

int RunCommand(const RunOptions& options)
{
    auto loaded = LoadBoardFile(options.boardFile);
    if (auto* errors = std::get_if<BoardFileErrors>(&loaded)) {
        for (const std::string& error : *errors)
            fprintf(stderr, "%s\n", error.c_str());
        return kExitUsage;
    }
    try {
        return RunOnBoard(options, std::move(std::get<BoardDescription>(loaded)));
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
