// The words of `orblink-vboard control` and the command that they make.
#pragma once

#include <string>

#include "virtual_board/board/control.h"

namespace vboard {

// Puts a word of the command line into the command; what is wrong with it, or nothing.
std::string FillArgument(const ControlArgument& argument, const std::string& word, Json& command);

// What a verb's help says below its arguments.
std::string HelpBelow(const ControlVerb& verb);

}  // namespace vboard
