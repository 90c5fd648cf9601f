// Texts from outside on their way to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace ctl {

// The text with control characters, and bytes that are not UTF-8, as \xHH: what a name holds must
// not move the cursor, change colours or answer for the terminal.
std::string Printable(std::string_view text);

// The same for a text of several lines.
std::string PrintableLines(std::string_view text);

}  // namespace ctl
