#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <optional>
#include <system_error>

#include "virtual_board/board/board_server.h"
#include "virtual_board/board/exit_codes.h"
#include "virtual_board/board/virtual_board.h"
#include "virtual_board/cables/lans.h"
#include "virtual_board/description/board_file.h"
#include "virtual_board/program/attach_command.h"
#include "virtual_board/program/priority.h"
#include "virtual_board/program/runtime_dir.h"

namespace vboard {
namespace {

UniqueFd EndingSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    UniqueFd fd{signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!fd)
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    return fd;
}

void Serve(const ServeOptions& options, BoardDescription description)
{
    const UniqueFd signals = EndingSignals();
    const RuntimeDir directory;
    const std::string path =
        options.socketPath.empty() ? directory.DefaultSocket() : options.socketPath;
    const std::string name = description.name;
    VirtualBoard board{std::move(description), options.timeScale};
    std::optional<cables::Lans> lans;
    if (board.Description().tapPorts)
        board.Plug(lans.emplace(board.Description(), board.Devices(), board.Clock()));
    board.UsePrivateNames(directory.MakeNames());
    BoardServer server{board, path};
    if (options.lowLatency)
        server.KeepProcessorsAwake();
    fprintf(stderr, "orblink-vboard: board \"%s\" at %s\n", name.c_str(), path.c_str());
    GoBeforePrograms();
    server.Run(signals.Get(), [] { return true; });
}

}  // namespace

int ServeCommand(const ServeOptions& options)
{
    auto loaded = LoadBoardFile(options.boardFile);
    if (auto* errors = std::get_if<BoardFileErrors>(&loaded)) {
        for (const std::string& error : *errors)
            fprintf(stderr, "%s\n", error.c_str());
        return kExitUsage;
    }
    try {
        Serve(options, std::move(std::get<BoardDescription>(loaded)));
        return 0;
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
