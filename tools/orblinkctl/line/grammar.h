// From words to a command of the table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/line/command.h"

namespace ctl {

// One word of a synopsis.
struct SynopsisWord {
    std::string name;
    bool literal;
    bool optional;
};

std::vector<SynopsisWord> SynopsisWords(const Command& command);

// The command that the words name, with its arguments checked. Fails with a usage error that names
// the bad word and what may stand there.
Call MatchWords(const std::vector<std::string>& words);

// Whether the words are as many as a command takes, and its literal ones right.
bool IsCommand(const std::vector<std::string>& words);

// The commands whose first words are these; all of them for no words.
std::vector<const Command*> CommandsUnder(const std::vector<std::string>& words);

}  // namespace ctl
