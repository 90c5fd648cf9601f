// Texts made from the command table: help, version, completion scripts and the manual page.
#pragma once

#include <string>
#include <vector>

namespace ctl {

std::string VersionText();

// Of one command when the words name one, of all that begin with them otherwise.
std::string HelpText(const std::vector<std::string>& words);

}  // namespace ctl
