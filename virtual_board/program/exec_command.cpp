#include "virtual_board/program/exec_command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "virtual_board/board/control.h"
#include "virtual_board/cables/network_namespace.h"
#include "virtual_board/program/control_client.h"

namespace vboard {
namespace {

constexpr int kExitNotExecutable = 126;
constexpr int kExitNotFound = 127;

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
    cables::ShowOwnInterfaces();
    return Execute(options.command);
}

}  // namespace

int ExecCommand(const ExecOptions& options)
{
    const auto path = BoardSocket(options.socketPath);
    if (!path)
        return kExitUsage;
    try {
        return ExecuteOn(options, *path);
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
