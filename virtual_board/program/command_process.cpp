#include "virtual_board/program/command_process.h"

#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "virtual_board/board/exit_codes.h"
#include "virtual_board/program/keeper.h"

namespace vboard {
namespace {

sigset_t BoardSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    for (int signal : kForwarded)
        sigaddset(&set, signal);
    return set;
}

}  // namespace

int Execute(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    const int error = errno;
    fprintf(stderr, "orblink-vboard: cannot run %s: %s\n", arguments[0], strerror(error));
    return error == ENOENT ? kExitNotFound : kExitNotExecutable;
}

CommandProcess::CommandProcess(const std::vector<std::string>& command,
                               const seam::FilterOptions& filter,
                               const std::function<void()>& prepare)
{
    const sigset_t set = BoardSignals();
    sigset_t before;
    sigprocmask(SIG_BLOCK, &set, &before);
    signals_ = UniqueFd{signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK)};
    seam::EntryChannel channel;
    const pid_t board = getpid();
    pid_ = fork();
    if (pid_ < 0 || !signals_)
        throw std::system_error(errno, std::generic_category(), "cannot start a process");
    if (pid_ == 0)
        KeepCommand(board, before, [&] {
            prepare();
            _exit(seam::EnterSeam(channel, filter) ? Execute(command) : kExitFailed);
        });
    entered_ = seam::AwaitEntry(channel);
}

bool CommandProcess::HandleSignals()
{
    signalfd_siginfo signal{};
    while (read(signals_.Get(), &signal, sizeof signal) == sizeof signal) {
        // The terminal has sent it to the command as well.
        const bool fromTerminal = signal.ssi_code == SI_KERNEL;
        if (signal.ssi_signo != SIGCHLD && !fromTerminal)
            kill(pid_, static_cast<int>(signal.ssi_signo));  // result dropped: it may have ended
    }
    return Reap();
}

bool CommandProcess::Reap()
{
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_)
        return false;
    exitStatus_ = WIFEXITED(status) ? WEXITSTATUS(status) : kExitSignalled + WTERMSIG(status);
    return true;
}

}  // namespace vboard
