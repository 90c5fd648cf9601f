// One command line that stands for several: lists of ports, several settings of a port.
#pragma once

#include <string>
#include <vector>

namespace ctl {

// The words of each command that the words of a line stand for, as a rule one. "port" takes a list
// of ports ("0:1-4,0:6") and several settings behind it; the words behind "help" are one argument.
std::vector<std::vector<std::string>> ExpandWords(const std::vector<std::string>& words);

// Whether the words are a port and complete commands of it, so that another one may follow.
bool MayGoOn(const std::vector<std::string>& words);

}  // namespace ctl
