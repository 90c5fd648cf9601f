// Texts from outside on their way to a terminal.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace ctl {

// The text with control characters, and bytes that are not UTF-8, as \xHH: what a name holds must
// not move the cursor, change colours or answer for the terminal.
std::string Printable(std::string_view text);

// The same for a text of several lines.
std::string PrintableLines(std::string_view text);

// A name in a field of fixed size, which ends there if nothing in it says so.
template <size_t N>
std::string_view NameIn(const char (&field)[N])
{
    return {field, strnlen(field, N)};
}

}  // namespace ctl
