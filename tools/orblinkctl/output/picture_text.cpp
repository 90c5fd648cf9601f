// A picture in characters.
#include <array>

#include "tools/orblinkctl/output/columns.h"
#include "tools/orblinkctl/output/picture.h"

namespace ctl {

namespace {

struct Strokes {
    const char* horizontal;
    const char* vertical;
    std::array<const char*, 4> corners;
};

constexpr Strokes kLines = {"─", "│", {"┌", "┐", "└", "┘"}};
constexpr Strokes kAscii = {"-", "|", {"+", "+", "+", "+"}};

const char* Colour(Style style)
{
    switch (style) {
        case Style::kUp:
            return "\033[32m";
        case Style::kOff:
            return "\033[2m";
        case Style::kTest:
            return "\033[33m";
        case Style::kError:
            return "\033[31m";
        case Style::kPlain:
            break;
    }
    return "";
}

struct Character {
    std::string text = " ";
    Style style = Style::kPlain;
};

class Grid {
public:
    Grid(int width, int height, const Strokes& strokes)
        : width_(static_cast<size_t>(width)),
          cells_(width_ * static_cast<size_t>(height)),
          strokes_(strokes)
    {
    }

    void Draw(const Box& box)
    {
        const int right = box.x + box.width - 1;
        const int bottom = box.y + box.height - 1;
        for (int x = box.x; x <= right; ++x)
            for (int y = box.y; y <= bottom; ++y)
                Put(x, y, Stroke(box, x, y), Style::kPlain);
        for (size_t i = 0; i < box.lines.size(); ++i)
            Write(box.x + 1, box.y + 1 + static_cast<int>(i), box.lines[i], box.style);
    }

    void Draw(const Wire& wire)
    {
        for (int x = wire.x; x < wire.x + wire.width; ++x)
            Put(x, wire.y, strokes_.horizontal, Style::kPlain);
        Write(wire.x + 2, wire.y - 1, wire.above, Style::kPlain);
        Write(wire.x + 2, wire.y + 1, wire.below, Style::kPlain);
    }

    std::string Lines(bool colour) const
    {
        std::string out;
        for (size_t start = 0; start < cells_.size(); start += width_)
            out += OneLine(start, colour) + "\n";
        return out;
    }

private:
    const char* Stroke(const Box& box, int x, int y) const
    {
        const bool left = x == box.x;
        const bool right = x == box.x + box.width - 1;
        const bool top = y == box.y;
        const bool bottom = y == box.y + box.height - 1;
        if ((top || bottom) && (left || right))
            // cppcheck-suppress CastIntegerToAddressAtReturn ; they are texts
            return strokes_.corners[(bottom ? 2U : 0U) + (right ? 1U : 0U)];
        if (top || bottom)
            return strokes_.horizontal;
        return left || right ? strokes_.vertical : " ";
    }

    Character* At(int x, int y)
    {
        return &cells_[static_cast<size_t>(y) * width_ + static_cast<size_t>(x)];
    }

    void Put(int x, int y, const char* text, Style style) { *At(x, y) = {text, style}; }

    void Write(int x, int y, const std::string& text, Style style)
    {
        Character* cell = At(x, y);
        for (const auto& glyph : Glyphs(text)) {
            *cell++ = {glyph.text, style};
            // The rest of a wide character.
            for (size_t i = 1; i < glyph.columns; ++i)
                *cell++ = {"", style};
        }
    }

    std::string OneLine(size_t start, bool colour) const
    {
        std::string line;
        Style current = Style::kPlain;
        for (size_t i = start; i < start + width_; ++i) {
            if (colour && cells_[i].style != current)
                line += std::string("\033[0m") + Colour(cells_[i].style);
            current = cells_[i].style;
            line += cells_[i].text;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        if (colour && current != Style::kPlain)
            line += "\033[0m";
        return line;
    }

    size_t width_;
    std::vector<Character> cells_;
    const Strokes& strokes_;
};

}  // namespace

std::string PictureText(const Picture& picture, bool lineCharacters, bool colour)
{
    Grid grid(picture.width, picture.height, lineCharacters ? kLines : kAscii);
    for (const auto& box : picture.boxes)
        grid.Draw(box);
    for (const auto& wire : picture.wires)
        grid.Draw(wire);
    return grid.Lines(colour);
}

}  // namespace ctl
