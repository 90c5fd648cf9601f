// The program itself: batches, help, completion, manual.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"

namespace ctl {

namespace {

ExitCode Help(Call& call)
{
    const auto words = SplitWords(call.Has("COMMAND") ? call.Word("COMMAND") : "");
    WriteOut(CurrentSettings().format == Format::kText ? HelpText(words)
                                                       : Rendered(call, CommandModel(words)));
    return kDone;
}

ExitCode Manual(Call&)
{
    WriteOut(ManualPage());
    return kDone;
}

ExitCode Completion(Call& call)
{
    WriteOut(CompletionScript(call.Word("SHELL")));
    return kDone;
}

struct LineSource {
    std::string name;
    std::function<bool(std::string&)> next;
};

LineSource StandardInput()
{
    return {"stdin", [](std::string& line) {
                char* text = nullptr;
                size_t room = 0;
                const ssize_t length = getline(&text, &room, stdin);
                line.assign(length > 0 ? text : "", length > 0 ? static_cast<size_t>(length) : 0);
                std::free(text);  // NOLINT(cppcoreguidelines-no-malloc): getline() took it
                return length >= 0;
            }};
}

ExitCode RunLines(const LineSource& source, bool keepGoing)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): each line becomes the current one
    const CommandLine batch = CurrentLine();
    ExitCode first = kDone;
    std::string line;
    for (int number = 1; source.next(line); ++number) {
        const auto words = SplitWords(line.substr(0, line.find('#')));
        if (words.empty())
            continue;
        const std::string where = source.name + ":" + std::to_string(number) + ": ";
        ExitCode code = kUsage;
        if (words.front() == "batch")
            Complain({kUsage, "a batch cannot run another one"}, where);
        else
            code = RunBatchLine(words, where, batch);
        first = first == kDone ? code : first;
        if (first != kDone && !keepGoing)
            break;
    }
    return first;
}

ExitCode Batch(Call& call)
{
    const bool keepGoing = call.Has("--keep-going");
    if (!call.Has("FILE") || call.Word("FILE") == "-")
        return RunLines(StandardInput(), keepGoing);
    const std::string& path = call.Word("FILE");
    std::ifstream file(path);
    if (!file)
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    return RunLines({path, [&](std::string& line) { return bool(std::getline(file, line)); }},
                    keepGoing);
}

constexpr Command kProgramCommands[] = {
    {"batch [FILE]", "--keep-going",
     "one command on each line of a file or of standard input; # begins a comment", "", nullptr,
     nullptr, Batch},
    {"help [COMMAND]", "", "help on all commands, on those that begin so, or on a word of them", "",
     nullptr, nullptr, Help},
    {"completion SHELL", "", "the completion script of a shell", "", nullptr, nullptr, Completion},
    {"manual", "", "the manual page in roff", "", nullptr, nullptr, Manual},
};

}  // namespace

std::span<const Command> ProgramCommands()
{
    return kProgramCommands;
}

}  // namespace ctl
