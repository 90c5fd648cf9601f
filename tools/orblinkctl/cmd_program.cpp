// The program itself.
#include "tools/orblinkctl/commands.h"
#include "tools/orblinkctl/help.h"
#include "tools/orblinkctl/session.h"

namespace ctl {

namespace {

ExitCode Help(Call& call)
{
    std::vector<std::string> words;
    if (call.Has("COMMAND"))
        words.push_back(call.Word("COMMAND"));
    WriteOut(HelpText(words));
    return kDone;
}

constexpr Command kCommands[] = {
    {"help [COMMAND]", "", "help on all commands, or on those that begin so", "", nullptr, nullptr,
     Help},
};

}  // namespace

std::span<const Command> ProgramCommands()
{
    return kCommands;
}

}  // namespace ctl
