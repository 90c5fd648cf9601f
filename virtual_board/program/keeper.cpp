#include "virtual_board/program/keeper.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

namespace vboard {
namespace {

constexpr int kBoardDied = SIGPWR;
constexpr int kFailed = 1;

// The ones that the kernel has made this process's own when their parents ended are among them.
void KillChildren()
{
    std::ifstream children{"/proc/thread-self/children"};
    for (pid_t pid = 0; children >> pid;)
        kill(pid, SIGKILL);  // result dropped: it may have ended
}

// Each that ends leaves its own children here, so it takes some rounds.
void EndAll()
{
    do
        KillChildren();
    while (waitpid(-1, nullptr, 0) > 0 || errno != ECHILD);
}

// Takes note of every child that has ended; true when the command is among them.
bool Reap(pid_t command, int& exitStatus)
{
    bool ended = false;
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (pid != command)
            continue;
        ended = true;
        exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kExitSignalled + WTERMSIG(status);
    }
    return ended;
}

// Until the command or the board has ended.
int PassSignalsOn(pid_t command, const sigset_t& signals)
{
    int exitStatus = kFailed;
    for (;;) {
        siginfo_t info{};
        const int signal = sigwaitinfo(&signals, &info);
        if (signal == kBoardDied || (signal == SIGCHLD && Reap(command, exitStatus)))
            return exitStatus;
        // From the terminal it has come to the command as well.
        if (signal > 0 && signal != SIGCHLD && info.si_code != SI_KERNEL)
            kill(command, signal);  // result dropped: it may have ended
    }
}

}  // namespace

void KeepCommand(pid_t board, const sigset_t& mask, const std::function<void()>& command)
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kForwarded)
        sigaddset(&signals, signal);
    sigaddset(&signals, SIGCHLD);
    sigaddset(&signals, kBoardDied);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_PDEATHSIG, kBoardDied);
    if (getppid() != board)
        _exit(kFailed);
    const pid_t pid = fork();
    if (pid == 0) {
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        command();
    }
    const int exitStatus = pid > 0 ? PassSignalsOn(pid, signals) : kFailed;
    EndAll();
    _exit(exitStatus);
}

}  // namespace vboard
