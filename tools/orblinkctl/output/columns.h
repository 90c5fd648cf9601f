// How many columns of a terminal texts take, and how many there are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

// One character with the marks that stand on it.
struct Glyph {
    std::string text;
    // 0 for what stands on nothing, 2 for the wide characters of East Asia and for pictures.
    size_t columns;
};

std::vector<Glyph> Glyphs(std::string_view text);
size_t ColumnsOf(std::string_view text);
// As much of the text as fits.
std::string CutTo(std::string_view text, size_t columns);

// Columns of standard output; without end where it is no terminal.
size_t ScreenColumns();

// Breaks a line between words, so that no part of it is wider; what follows is indented by four
// more than the line itself. A word that is too wide is cut.
std::string Wrapped(std::string_view line, size_t columns);

}  // namespace ctl
