#include "tools/orblinkctl/output/columns.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace ctl {

namespace {

struct Range {
    uint32_t first;
    uint32_t last;
};

// Marks that stand on the character before them, and joiners.
constexpr Range kMarks[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},
                            {0x064B, 0x065F}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
                            {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
                            {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

// East Asian width W and F, and pictures.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                           {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
                           {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
                           {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <size_t N>
bool IsIn(const Range (&ranges)[N], uint32_t code)
{
    return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

// The length of the character that begins here; a byte that begins none stands for itself.
size_t LengthAt(std::string_view text, size_t at)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return std::min(length, text.size() - at);
}

uint32_t CodeOf(std::string_view character)
{
    const auto lead = static_cast<unsigned char>(character[0]);
    if (character.size() == 1)
        return lead;
    uint32_t code = lead & (0xFFU >> (character.size() + 1));
    for (const char c : character.substr(1))
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
    return code;
}

}  // namespace

std::vector<Glyph> Glyphs(std::string_view text)
{
    std::vector<Glyph> glyphs;
    for (size_t at = 0; at < text.size();) {
        const auto character = text.substr(at, LengthAt(text, at));
        const uint32_t code = CodeOf(character);
        at += character.size();
        const bool mark = IsIn(kMarks, code);
        if (mark && !glyphs.empty())
            glyphs.back().text += character;
        else
            glyphs.push_back({std::string(character), mark ? 0U : IsIn(kWide, code) ? 2U : 1U});
    }
    return glyphs;
}

size_t ColumnsOf(std::string_view text)
{
    size_t columns = 0;
    for (const auto& glyph : Glyphs(text))
        columns += glyph.columns;
    return columns;
}

std::string CutTo(std::string_view text, size_t columns)
{
    std::string cut;
    for (const auto& glyph : Glyphs(text)) {
        if (glyph.columns > columns)
            break;
        columns -= glyph.columns;
        cut += glyph.text;
    }
    return cut;
}

std::string Wrapped(std::string_view line, size_t columns)
{
    constexpr size_t kLeast = 16;
    constexpr size_t kHanging = 4;
    if (columns < kLeast || ColumnsOf(line) <= columns)
        return std::string(line);
    const size_t start = std::min(line.find_first_not_of(' '), line.size());
    const std::string hanging(std::min(start + kHanging, columns / 2), ' ');
    std::string out(line.substr(0, start));
    size_t used = start;
    for (size_t at = start; at < line.size();) {
        const size_t end = std::min(line.find(' ', at + 1), line.size());
        auto word = line.substr(at, end - at);
        at = end;
        if (used + ColumnsOf(word) > columns && used > hanging.size()) {
            out.append("\n").append(hanging);
            used = hanging.size();
            word.remove_prefix(word.starts_with(' ') ? 1 : 0);
        }
        for (; used + ColumnsOf(word) > columns; used = hanging.size()) {
            const std::string part = CutTo(word, columns - used);
            out.append(part).append("\n").append(hanging);
            word.remove_prefix(part.size());
        }
        out += word;
        used += ColumnsOf(word);
    }
    return out;
}

size_t ScreenColumns()
{
    winsize size = {};
    if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return SIZE_MAX;
    return size.ws_col == 0 ? SIZE_MAX : size.ws_col;
}

}  // namespace ctl
