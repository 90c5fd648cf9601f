#include "virtual_board/program/run_command.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>

#include "virtual_board/board/board_server.h"
#include "virtual_board/board/virtual_board.h"
#include "virtual_board/cables/lans.h"
#include "virtual_board/cables/network_namespace.h"
#include "virtual_board/description/board_file.h"
#include "virtual_board/program/keeper.h"
#include "virtual_board/program/namespaces.h"
#include "virtual_board/program/runtime_dir.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif

namespace vboard {
namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitNotExecutable = 126;
constexpr int kExitNotFound = 127;

sigset_t BoardSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    for (int signal : kForwarded)
        sigaddset(&set, signal);
    return set;
}

void Prepend(const char* variable, const std::string& value, char separator)
{
    const char* before = getenv(variable);
    bool empty = before == nullptr || *before == '\0';
    setenv(variable, (empty ? value : value + separator + before).c_str(), 1);
}

void SetEnvironment(const RunOptions& options, const RuntimeDir& directory,
                    const std::string& socketPath)
{
    setenv(wire::kSocketVariable, socketPath.c_str(), 1);
    char scale[32];
    snprintf(scale, sizeof scale, "%.9g", options.timeScale);
    setenv(wire::kTimeScaleVariable, scale, 1);
    Prepend("LD_PRELOAD", directory.Preload(), ':');
    Prepend("LD_LIBRARY_PATH", directory.LibraryPath(), ':');
#ifdef __SANITIZE_ADDRESS__
    // The preloaded library stands before the sanitizer's, on purpose and without harm.
    Prepend("ASAN_OPTIONS", "verify_asan_link_order=0", ':');
#endif
}

[[noreturn]] void Execute(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    int error = errno;
    fprintf(stderr, "orblink-vboard: cannot run %s: %s\n", arguments[0], strerror(error));
    _exit(error == ENOENT ? kExitNotFound : kExitNotExecutable);
}

class CommandProcess {
public:
    explicit CommandProcess(const RunOptions& options, const std::function<void()>& prepare)
    {
        sigset_t set = BoardSignals();
        sigset_t before;
        sigprocmask(SIG_BLOCK, &set, &before);
        signals = UniqueFd{signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK)};
        const pid_t board = getpid();
        pid = fork();
        if (pid != 0)
            return;
        KeepCommand(board, before, [&] {
            prepare();
            Execute(options.command);
        });
    }

    bool Started() const { return pid > 0 && signals; }
    int SignalFd() const { return signals.Get(); }
    int ExitStatus() const { return exitStatus; }

    // Passes on what has arrived; true once the command has ended.
    bool HandleSignals()
    {
        signalfd_siginfo signal{};
        while (read(signals.Get(), &signal, sizeof signal) == sizeof signal) {
            // The terminal has sent it to the command as well.
            bool fromTerminal = signal.ssi_code == SI_KERNEL;
            if (signal.ssi_signo != SIGCHLD && !fromTerminal)
                kill(pid, static_cast<int>(signal.ssi_signo));
        }
        return Reap();
    }

private:
    bool Reap()
    {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) != pid)
            return false;
        exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kExitSignalled + WTERMSIG(status);
        return true;
    }

    pid_t pid = -1;
    UniqueFd signals;
    int exitStatus = kExitFailed;
};

int RunOnBoard(const RunOptions& options, BoardDescription spec, const LibraryDirs& libraries)
{
    EnterPrivateNamespaces();
    RuntimeDir directory{libraries};
    std::string path = options.socketPath.empty() ? directory.DefaultSocket() : options.socketPath;
    std::string name = spec.name;
    if (!options.ports.empty())
        spec.tapPorts = options.ports == "tap";
    const bool keepsRights = spec.tapPorts && geteuid() != 0;
    VirtualBoard board{std::move(spec), options.timeScale};
    std::optional<cables::Lans> lans;
    if (board.Description().tapPorts)
        board.Plug(lans.emplace(board.Description(), board.Devices(), board.Clock()));
    BoardServer server{board, path};
    fprintf(stderr, "orblink-vboard: board \"%s\" at %s\n", name.c_str(), path.c_str());
    CommandProcess command{options, [&] {
                               SetEnvironment(options, directory, path);
                               if (keepsRights)
                                   cables::KeepRightsAcrossExec();
                           }};
    if (!command.Started())
        throw std::system_error(errno, std::generic_category(), "cannot start a process");
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
    for (const std::string& directory : options.libraryDirs)
        if (!HasLibrary(directory)) {
            fprintf(stderr, "orblink-vboard: no liborblink-vboard-preload.so in %s\n",
                    directory.c_str());
            return kExitUsage;
        }
    LibraryDirs libraries = FindLibraries(options.libraryDirs);
    if (!libraries.bits64 && !libraries.bits32) {
        fprintf(stderr,
                "orblink-vboard: liborblink-vboard-preload.so not found; name its "
                "directory with --lib-dir\n");
        return kExitFailed;
    }
    try {
        return RunOnBoard(options, std::move(std::get<BoardDescription>(loaded)), libraries);
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
