#include "virtual_board/program/exec_command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "virtual_board/board/control.h"
#include "virtual_board/cables/network_namespace.h"
#include "virtual_board/program/command_process.h"
#include "virtual_board/program/control_client.h"

namespace vboard {
namespace {

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
