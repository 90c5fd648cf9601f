// One row of the command table. The grammar, the help, the completion and the manual all read it.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

struct Command;

// One command as it was typed, its words already checked against their kinds.
class Call {
public:
    explicit Call(const Command& found) : command(&found) {}

    bool Has(std::string_view name) const { return values.find(name) != values.end(); }
    const std::string& Word(std::string_view name) const { return values.find(name)->second; }
    uint64_t Number(std::string_view name) const { return *ParseNumber(Word(name)); }
    template <typename T>
    T As(std::string_view name) const
    {
        return static_cast<T>(Number(name));
    }

    const Command* command;
    // By argument name ("PORT") and by option ("--vlan"; "" for one without a value).
    std::map<std::string, std::string, std::less<>> values;
    // What a command that succeeded ends with; "differences found" is the only other one.
    ExitCode exitCode = kDone;
};

struct Command {
    // Literal words in lower case, arguments in upper case, trailing [optional] ones in brackets.
    const char* synopsis;
    // Options of this command's own, separated by blanks.
    const char* options;
    const char* summary;
    // Exported library functions behind it, separated by blanks.
    const char* operations;
    Model (*query)(Call&);
    void (*print)(const Model&, std::string&);
    // In place of the two: a command that writes its output itself, and returns the exit code.
    ExitCode (*run)(Call&) = nullptr;
};

// The table, in the order of the help.
struct CommandGroup {
    const char* title;
    std::span<const Command> commands;
};
std::span<const CommandGroup> CommandGroups();

}  // namespace ctl
