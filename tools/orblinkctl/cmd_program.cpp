// The program itself.
#include "tools/orblinkctl/commands.h"
#include "tools/orblinkctl/grammar.h"
#include "tools/orblinkctl/help.h"
#include "tools/orblinkctl/session.h"

namespace ctl {

namespace {

// The command table itself.
Model CommandModel(const std::vector<std::string>& words)
{
    Model model;
    model["commands"] = Model::array();
    for (const auto* command : CommandsUnder(words)) {
        Model entry;
        entry["synopsis"] = command->synopsis;
        entry["options"] = SplitWords(command->options);
        entry["summary"] = command->summary;
        entry["operations"] = SplitWords(command->operations);
        model["commands"].push_back(std::move(entry));
    }
    return model;
}

ExitCode Help(Call& call)
{
    std::vector<std::string> words;
    if (call.Has("COMMAND"))
        words.push_back(call.Word("COMMAND"));
    WriteOut(CurrentSettings().format == Format::kText ? HelpText(words)
                                                       : Rendered(call, CommandModel(words)));
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
