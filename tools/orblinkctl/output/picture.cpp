#include "tools/orblinkctl/output/picture.h"

#include <algorithm>

#include "tools/orblinkctl/facts/json.h"
#include "tools/orblinkctl/output/columns.h"

namespace ctl {

namespace {

constexpr int kSocWidth = 7;
constexpr int kWireWidth = 17;
constexpr int kDeviceX = kSocWidth + kWireWidth;
constexpr int kPortWidth = 13;
constexpr int kPortHeight = 6;
constexpr int kPortsPerRow = 4;
constexpr int kDeviceWidth = kPortsPerRow * kPortWidth + 2;
constexpr size_t kPortText = kPortWidth - 2;

std::string LinkText(const Model& object)
{
    if (!object["error"].is_null())
        return "not readable";
    if (object["link"].is_null())
        return "-";
    if (object["link"] == false)
        return "down";
    return "up " + Text(object["link_speed"]) + (object["link_duplex"] == "full" ? " FD" : " HD");
}

Style PortStyle(const Model& port)
{
    if (!port["error"].is_null())
        return Style::kError;
    if (port["enabled"] == false)
        return Style::kOff;
    if (port["dvt"] == true)
        return Style::kTest;
    return port["link"] == true ? Style::kUp : Style::kPlain;
}

std::string Flags(const Model& port)
{
    std::string flags;
    if (port["eee"] == true)
        flags += " eee";
    if (!port["mirror_to"].is_null())
        flags += " >" + Text(port["mirror_to"]);
    if (port["dvt"] == true)
        flags += " dvt";
    return flags.empty() ? flags : flags.substr(1);
}

Box PortBox(const Model& port, int x, int y)
{
    std::string head = Text(port["port"]) + " " + Text(port["role"]);
    if (!port["label"].is_null())
        head = Text(port["port"]) + " " + Text(port["label"]);
    std::vector<std::string> lines = {
        head,
        port["enabled"] == false ? "disabled" : LinkText(port),
        port["role"] == "internal" ? "" : "vlan " + Text(port["vlan"]),
        Flags(port),
    };
    for (auto& line : lines)
        line = CutTo(line, kPortText);
    return {x, y, kPortWidth, kPortHeight, PortStyle(port), std::move(lines)};
}

Wire LaneWire(const Model& board, int y)
{
    return {kSocWidth, y, kWireWidth, "lane " + Text(board["lane"]),
            Text(board["interface"]) + " " + Text(board["interface_speed"])};
}

// Height of the drawing of one switch.
int AddSwitch(Picture& picture, const Model& device, const Model& ports, int y)
{
    const std::string wide = "mtu " + Text(device["mtu"]) + ", aging " + Text(device["aging"]) +
                             ", IGMP " + OnOff(device["igmp"]) + ", bridging " +
                             Text(device["bridge_mode"]);
    const size_t outer = picture.boxes.size();
    const Style style = device["state"] == "enabled" ? Style::kPlain : Style::kOff;
    picture.boxes.push_back(
        {kDeviceX,
         y,
         kDeviceWidth,
         0,
         style,
         {"switch " + Text(device["switch"]) + ": " + Text(device["state"]), wide}});
    int count = 0;
    for (const auto& port : ports) {
        if (port["switch"] != device["switch"])
            continue;
        const int column = count % kPortsPerRow;
        const int row = count / kPortsPerRow;
        picture.boxes.push_back(
            PortBox(port, kDeviceX + 1 + column * kPortWidth, y + 3 + row * kPortHeight));
        ++count;
    }
    const int rows = (count + kPortsPerRow - 1) / kPortsPerRow;
    picture.boxes[outer].height = 4 + rows * kPortHeight;
    if (!device["board"].is_null())
        picture.wires.push_back(LaneWire(device["board"], y + 2));
    return picture.boxes[outer].height;
}

int AddPhy(Picture& picture, const Model& phy, int y)
{
    const bool on = phy["state"] == "enabled";
    const Style style = !phy["error"].is_null() ? Style::kError
                        : !on                   ? Style::kOff
                        : phy["link"] == true   ? Style::kUp
                                                : Style::kPlain;
    const std::string label = phy["label"].is_null() ? "" : " " + Text(phy["label"]);
    picture.boxes.push_back({kDeviceX,
                             y,
                             kDeviceWidth,
                             4,
                             style,
                             {"PHY " + Text(phy["phy"]) + label + ": " + Text(phy["state"]) +
                                  ", admin " + OnOff(phy["admin"]),
                              LinkText(phy)}});
    if (!phy["board"].is_null())
        picture.wires.push_back(LaneWire(phy["board"], y + 1));
    return 4;
}

}  // namespace

Picture DrawBoard(const Model& board)
{
    Picture picture;
    picture.boxes.push_back({0, 0, kSocWidth, 0, Style::kPlain, {" SoC"}});
    int y = 0;
    for (const auto& device : board["switches"])
        y += AddSwitch(picture, device, board["ports"], y);
    for (const auto& phy : board["phys"])
        y += AddPhy(picture, phy, y);
    picture.height = std::max(y, 3);
    picture.width = y == 0 ? kSocWidth : kDeviceX + kDeviceWidth;
    picture.boxes.front().height = picture.height;
    return picture;
}

}  // namespace ctl
