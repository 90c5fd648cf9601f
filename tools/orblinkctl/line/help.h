// Texts made from the command table: help, version, completion scripts and the manual page.
#pragma once

#include <string>
#include <vector>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

std::string VersionText();

// Of one command when the words name one, of all that begin with them otherwise.
std::string HelpText(const std::vector<std::string>& words);

// {"commands": [...]}: the rows of the command table that begin with the words.
Model CommandModel(const std::vector<std::string>& words);

// The manual page in roff.
std::string ManualPage();

// What may stand in place of the last word, which may be unfinished; for completion scripts.
std::vector<std::string> Completions(std::vector<std::string> words);
std::string CompletionScript(const std::string& shell);

}  // namespace ctl
