// What was meant by a word that nobody knows.
#pragma once

#include <string>
#include <vector>

namespace ctl {

// "; did you mean 'port'?", as far as a slip of the finger shows it; empty for none.
std::string MeantText(const std::string& word, const std::vector<std::string>& expected);

}  // namespace ctl
