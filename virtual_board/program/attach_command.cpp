#include "virtual_board/program/attach_command.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>

#include "virtual_board/board/exit_codes.h"
#include "virtual_board/program/command_process.h"
#include "virtual_board/program/environment.h"
#include "virtual_board/program/remote_board.h"
#include "virtual_board/seam/supervisor.h"

namespace vboard {
namespace {

wire::Hello Greet(RemoteBoard& board)
{
    wire::Hello hello{};
    const Reply reply = board.Ask({getpid(), wire::Op::kHello});
    if (reply.error != 0 || !ReadReply(reply, hello))
        throw std::runtime_error("the board does not answer");
    if (hello.privateNames == 0)
        throw std::runtime_error(
            "this board lives in namespaces of its own, which only its own command shares; "
            "'orblink-vboard serve' runs one that can be joined");
    return hello;
}

void ServeUntilItEnds(seam::Supervisor& supervisor, CommandProcess& command)
{
    for (;;) {
        pollfd polled[] = {{command.SignalFd(), POLLIN, 0}, {supervisor.Fd(), POLLIN, 0}};
        const auto limit = supervisor.Wait();
        const auto count = limit ? limit->count() : 0;
        const timespec time{static_cast<time_t>(count / 1'000'000'000),
                            static_cast<long>(count % 1'000'000'000)};
        if (ppoll(polled, std::size(polled), limit ? &time : nullptr, nullptr) < 0)
            continue;
        supervisor.Serve();
        if (polled[0].revents != 0 && command.HandleSignals())
            return;
    }
}

int Attach(const AttachOptions& options)
{
    RemoteBoard board{options.socketPath};
    const wire::Hello hello = Greet(board);
    CommandProcess command{
        options.command, {hello.timeScale != 1, true}, [&] { SetEnvironment(options.socketPath); }};
    if (command.WithoutPrivileges())
        fprintf(stderr, "%s\n", kPrivilegesAreLost);
    seam::Supervisor supervisor{board, command.TakeListener(), hello.timeScale, true};
    ServeUntilItEnds(supervisor, command);
    return command.ExitStatus();
}

}  // namespace

int AttachCommand(const AttachOptions& options)
{
    try {
        return Attach(options);
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
