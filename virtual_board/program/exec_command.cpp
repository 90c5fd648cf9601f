#include "virtual_board/program/exec_command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "virtual_board/board/board_control.h"
#include "virtual_board/board/wire.h"
#include "virtual_board/cables/network_namespace.h"
#include "virtual_board/program/control_client.h"

namespace vboard {
namespace {

constexpr int kExitNotExecutable = 126;
constexpr int kExitNotFound = 127;

struct ExecOptions {
    std::string socketPath;
    std::string host;
    std::vector<std::string> command;
};

int Execute(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    const int error = errno;
    fprintf(stderr, "orblink-vboard: cannot run %s: %s\n", arguments[0], strerror(error));
    return error == ENOENT ? kExitNotFound : kExitNotExecutable;
}

int ExecuteOn(const ExecOptions& options, const std::string& socketPath)
{
    const Json answer = AskBoard(socketPath, {{"verb", "network"}, {"host", options.host}});
    if (!answer.value("ok", false)) {
        fprintf(stderr, "orblink-vboard: %s\n", answer.value("error", "refused").c_str());
        return answer.value("exit", kExitFailed);
    }
    cables::EnterNetwork(answer.at("pid"), answer.at("fd"));
    return Execute(options.command);
}

int ExecCommand(const ExecOptions& options)
{
    const char* inside = getenv(wire::kSocketVariable);
    const std::string given = inside != nullptr ? inside : "";
    const std::string path = options.socketPath.empty() ? given : options.socketPath;
    if (path.empty()) {
        fprintf(stderr,
                "orblink-vboard: no board named: give --socket PATH, or run inside "
                "'orblink-vboard run'\n");
        return kExitUsage;
    }
    try {
        return ExecuteOn(options, path);
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace

void AddExecCommand(CLI::App& program, std::function<int()>& run)
{
    auto options = std::make_shared<ExecOptions>();
    auto* verb = program.add_subcommand("exec", "run a command on a host behind a switch port");
    verb->add_option("--socket", options->socketPath,
                     "the board's socket; inside 'run' the board that is running");
    verb->add_option("host", options->host, "as 'control hosts' shows it")->required();
    verb->add_option("command", options->command, "after --: the command and its arguments")
        ->required();
    verb->final_callback([options, &run] { run = [=] { return ExecCommand(*options); }; });
}

}  // namespace vboard
