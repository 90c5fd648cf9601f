#include "tools/orblink_web/view/drawing.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tools/orblink_web/view/html.h"
#include "tools/orblink_web/view/sections.h"
#include "tools/orblinkctl/access/json.h"

namespace web {

namespace {

constexpr int kWidth = 424;
constexpr int kLaneHeight = 74;
constexpr int kHead = 48;
constexpr int kJackWidth = 96;
constexpr int kJackHeight = 84;
constexpr int kGap = 6;
constexpr int kPortsPerRow = 4;
constexpr int kBar = kJackWidth - 16;

std::string Attribute(const char* name, int value)
{
    return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

std::string Rectangle(const char* style, int x, int y, int width, int height, int corner)
{
    return std::string("<rect class=\"") + style + "\"" + Attribute("x", x) + Attribute("y", y) +
           Attribute("width", width) + Attribute("height", height) + Attribute("rx", corner) + "/>";
}

// The text is HTML already.
std::string TextAt(const char* style, int x, int y, const std::string& text)
{
    return std::string("<text class=\"") + style + "\"" + Attribute("x", x) + Attribute("y", y) +
           ">" + text + "</text>";
}

// Long labels would leave their box; characters are counted, not bytes.
std::string Cut(const std::string& text, size_t most)
{
    size_t count = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool begins = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (begins && ++count > most)
            return Escaped(text.substr(0, i)) + "…";
    }
    return Escaped(text);
}

// Full at 10 Gb/s, a tenth less for each factor of ten below it.
int BarLength(const ctl::Model& octetsPerSecond)
{
    if (!octetsPerSecond.is_number() || octetsPerSecond == 0)
        return 0;
    const double decades = std::log10(octetsPerSecond.get<double>() * 8);
    return static_cast<int>(std::clamp(decades / 10, 0.05, 1.0) * kBar);
}

std::string Direction(const char* arrow, const char* style, int x, int y, const ctl::Model& rate)
{
    return TextAt("rate", x + 8, y, arrow + BitRate(rate)) +
           Rectangle("groove", x + 8, y + 3, kBar, 3, 1) +
           Rectangle(style, x + 8, y + 3, BarLength(rate), 3, 1);
}

const char* Style(const ctl::Model& device)
{
    if (!At(device, "error").is_null())
        return "jack bad";
    if (At(device, "enabled") == false || At(device, "admin") == false)
        return "jack off";
    return At(device, "link") == true ? "jack up" : "jack";
}

std::string LinkWords(const ctl::Model& device)
{
    if (!At(device, "error").is_null())
        return "error";
    if (At(device, "enabled") == false)
        return "disabled";
    const ctl::Model& link = At(device, "link");
    if (!link.is_boolean())
        return "unknown";
    if (link == false)
        return "down";
    return Shown(At(device, "link_speed")) +
           (At(device, "link_duplex") == "half" ? " half" : " full");
}

std::string Jack(const ctl::Model& port, const Traffic& traffic, int x, int y)
{
    const std::string name = PortName(port);
    const ctl::Model& rates = traffic.RatesOf(name);
    const std::string label = Plain(At(port, "label"));
    const std::string role = Plain(At(port, "role"));
    return "<g data-port=\"" + Escaped(name) + "\"><title>" + Escaped(name + " " + label) +
           "</title>" + Rectangle(Style(port), x, y, kJackWidth, kJackHeight, 6) +
           TextAt("name", x + 8, y + 18,
                  Shown(At(port, "port")) + " " + Cut(label.empty() ? role : label, 8)) +
           TextAt("link", x + 8, y + 35, LinkWords(port)) +
           Direction("↓ ", "received", x, y + 53, At(rates, "receive_bytes_per_second")) +
           Direction("↑ ", "sent", x, y + 71, At(rates, "transmit_bytes_per_second")) + "</g>";
}

std::string Lane(const ctl::Model& wiring, bool up)
{
    const int middle = kWidth / 2;
    std::string out =
        Rectangle("soc", middle - 40, 2, 80, 26, 6) + TextAt("centre", middle, 20, "SoC") +
        "<line class=\"" + (up ? "lane up" : "lane") + "\"" + Attribute("x1", middle) +
        Attribute("y1", 28) + Attribute("x2", middle) + Attribute("y2", kLaneHeight) + "/>";
    if (!wiring.is_object())
        return out;
    return out + TextAt("note", middle + 10, 46, "lane " + Shown(At(wiring, "lane"))) +
           TextAt("note", middle + 10, 62,
                  Shown(At(wiring, "interface")) + " " + Shown(At(wiring, "interface_speed")));
}

std::string Image(const std::string& name, int height, const std::string& content)
{
    return "<svg viewBox=\"0 0 " + std::to_string(kWidth) + " " + std::to_string(height) +
           "\" role=\"img\" aria-label=\"" + name + "\">" + content + "</svg>";
}

std::string SwitchImage(const ctl::Model& device, const ctl::Model& ports, const Traffic& traffic)
{
    std::string jacks;
    int count = 0;
    int up = 0;
    for (const auto& port : ports) {
        if (At(port, "switch") != At(device, "switch"))
            continue;
        const int column = count % kPortsPerRow;
        const int row = count / kPortsPerRow;
        jacks += Jack(port, traffic, 11 + column * (kJackWidth + kGap),
                      kLaneHeight + kHead + row * (kJackHeight + kGap));
        up += At(port, "link") == true ? 1 : 0;
        ++count;
    }
    const int rows = (count + kPortsPerRow - 1) / kPortsPerRow;
    const int height = kHead + rows * (kJackHeight + kGap) + 6;
    const bool enabled = At(device, "state") == "enabled";
    const std::string name = "switch " + Shown(At(device, "switch"));
    const std::string settings = "MTU " + Shown(At(device, "mtu")) + ", bridging " +
                                 Shown(At(device, "bridge_mode")) + ", ageing " +
                                 Shown(At(device, "aging"));
    return Image(
        name + ", " + Shown(At(device, "state")) + ", " + std::to_string(up) + " of " +
            std::to_string(count) + " links up",
        kLaneHeight + height + 2,
        Lane(At(device, "board"), enabled) +
            Rectangle(enabled ? "device" : "device off", 1, kLaneHeight, kWidth - 2, height, 10) +
            TextAt("title", 14, kLaneHeight + 21, name + ": " + Shown(At(device, "state"))) +
            TextAt("note", 14, kLaneHeight + 38, settings) + jacks);
}

std::string PhyImage(const ctl::Model& phy)
{
    constexpr int kHeight = 64;
    const bool enabled = At(phy, "state") == "enabled";
    const std::string name = "PHY " + Shown(At(phy, "phy"));
    const std::string label = Plain(At(phy, "label"));
    return Image(
        name + ", " + Shown(At(phy, "state")) + ", link " + LinkWords(phy),
        kLaneHeight + kHeight + 2,
        Lane(At(phy, "board"), enabled) +
            Rectangle(enabled ? Style(phy) : "jack off", 1, kLaneHeight, kWidth - 2, kHeight, 10) +
            TextAt("title", 14, kLaneHeight + 25,
                   name + (label.empty() ? "" : " " + Cut(label, 24)) + ": " +
                       Shown(At(phy, "state"))) +
            TextAt("link", 14, kLaneHeight + 46, "link " + LinkWords(phy)));
}

}  // namespace

std::string Drawing(const ctl::Model& board, const Traffic& traffic)
{
    std::string out;
    for (const auto& device : At(board, "switches"))
        out += SwitchImage(device, At(board, "ports"), traffic);
    for (const auto& phy : At(board, "phys"))
        out += PhyImage(phy);
    return out.empty() ? Remark("the board has no device that could be drawn")
                       : "<div class=\"drawing\">" + out + "</div>";
}

}  // namespace web
