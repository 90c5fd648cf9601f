// A picture as SVG.
#include "tools/orblinkctl/output/picture.h"

namespace ctl {

namespace {

constexpr int kCellWidth = 9;
constexpr int kCellHeight = 18;
constexpr int kMargin = 10;

int PixelX(int x)
{
    return kMargin + x * kCellWidth;
}
int PixelY(int y)
{
    return kMargin + y * kCellHeight;
}

const char* Fill(Style style)
{
    switch (style) {
        case Style::kUp:
            return "#d7f5d7";
        case Style::kOff:
            return "#e4e4e4";
        case Style::kTest:
            return "#fff3c4";
        case Style::kError:
            return "#ffd7d7";
        case Style::kPlain:
            break;
    }
    return "#ffffff";
}

std::string Escaped(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
    }
    return out;
}

std::string TextAt(int x, int y, const std::string& text)
{
    if (text.empty())
        return "";
    return "<text x=\"" + std::to_string(PixelX(x)) + "\" y=\"" +
           std::to_string(PixelY(y) + kCellHeight * 3 / 4) + "\">" + Escaped(text) + "</text>\n";
}

std::string BoxElement(const Box& box)
{
    std::string out = "<rect x=\"" + std::to_string(PixelX(box.x) + 3) + "\" y=\"" +
                      std::to_string(PixelY(box.y) + 3) + "\" width=\"" +
                      std::to_string(box.width * kCellWidth - 6) + "\" height=\"" +
                      std::to_string(box.height * kCellHeight - 6) + "\" rx=\"4\" fill=\"" +
                      Fill(box.style) + "\" stroke=\"#404040\"/>\n";
    for (size_t i = 0; i < box.lines.size(); ++i)
        out += TextAt(box.x + 1, box.y + 1 + static_cast<int>(i), box.lines[i]);
    return out;
}

std::string WireElement(const Wire& wire)
{
    const std::string y = std::to_string(PixelY(wire.y) + kCellHeight / 2);
    return "<line x1=\"" + std::to_string(PixelX(wire.x) - 3) + "\" y1=\"" + y + "\" x2=\"" +
           std::to_string(PixelX(wire.x + wire.width) + 3) + "\" y2=\"" + y +
           "\" stroke=\"#404040\" stroke-width=\"2\"/>\n" +
           TextAt(wire.x + 2, wire.y - 1, wire.above) + TextAt(wire.x + 2, wire.y + 1, wire.below);
}

}  // namespace

std::string PictureSvg(const Picture& picture)
{
    const std::string width = std::to_string(picture.width * kCellWidth + 2 * kMargin);
    const std::string height = std::to_string(picture.height * kCellHeight + 2 * kMargin);
    std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width +
                      "\" height=\"" + height + "\" viewBox=\"0 0 " + width + " " + height +
                      "\" font-family=\"monospace\" font-size=\"14\">\n"
                      "<rect width=\"100%\" height=\"100%\" fill=\"#fafafa\"/>\n";
    for (const auto& box : picture.boxes)
        out += BoxElement(box);
    for (const auto& wire : picture.wires)
        out += WireElement(wire);
    return out + "</svg>\n";
}

}  // namespace ctl
