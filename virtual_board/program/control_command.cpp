#include "virtual_board/program/control_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "virtual_board/program/capture_command.h"
#include "virtual_board/program/control_client.h"

namespace vboard {
namespace {

std::string TextOf(ControlVerb::Answer form, const Json& answer)
{
    switch (form) {
        case ControlVerb::Answer::kTree:
            return StateText(answer);
        case ControlVerb::Answer::kJournal:
            return JournalText(answer);
        case ControlVerb::Answer::kRegisters:
            return RegistersText(answer);
        case ControlVerb::Answer::kTrace:
            return TraceText(answer);
        case ControlVerb::Answer::kCapture:
        case ControlVerb::Answer::kNothing:
            return {};
    }
    return {};
}

int Print(const ControlOptions& options, const Json& answer)
{
    if (!answer.value("ok", false)) {
        fprintf(stderr, "orblink-vboard: %s\n", answer.value("error", "refused").c_str());
        return answer.value("exit", kExitFailed);
    }
    const std::string text =
        options.json ? answer.dump(2) + "\n" : TextOf(options.verb->answer, answer);
    if (fwrite(text.data(), 1, text.size(), stdout) == text.size() && fflush(stdout) == 0)
        return 0;
    fprintf(stderr, "orblink-vboard: standard output: %s\n", strerror(errno));
    return kExitFailed;
}

}  // namespace

int ControlCommand(const ControlOptions& options)
{
    const auto path = BoardSocket(options.socketPath);
    if (!path)
        return kExitUsage;
    try {
        if (options.verb->answer == ControlVerb::Answer::kCapture)
            return CaptureCommand(*path, options.command);
        return Print(options, AskBoard(*path, options.command));
    } catch (const std::exception& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

}  // namespace vboard
