#include "tools/orblinkctl/output/picture.h"

#include <algorithm>
#include <utility>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/output/columns.h"

namespace ctl {

namespace {

constexpr int kSocWidth = 7;
constexpr int kWireWidth = 17;
constexpr int kDeviceX = kSocWidth + kWireWidth;
constexpr int kPortWidth = 13;
constexpr int kPortHeight = 6;
constexpr int kPortsPerRow = 4;
constexpr size_t kPortText = kPortWidth - 2;

// Where the devices stand, and how wide they are.
struct Room {
    bool wired;
    int x;
    int portsPerRow;
    int width;
};

int WidthOf(int portsPerRow)
{
    return portsPerRow * kPortWidth + 2;
}

Room RoomWithin(size_t columns)
{
    if (std::cmp_greater_equal(columns, kDeviceX + WidthOf(kPortsPerRow)))
        return {true, kDeviceX, kPortsPerRow, WidthOf(kPortsPerRow)};
    int ports = kPortsPerRow;
    while (ports > 1 && std::cmp_greater(WidthOf(ports), columns))
        --ports;
    return {false, 0, ports, WidthOf(ports)};
}

// The text of a box, cut where it is wider.
std::vector<std::string> Within(const Room& room, std::vector<std::string> lines)
{
    for (auto& line : lines)
        line = CutTo(line, static_cast<size_t>(room.width - 2));
    return lines;
}

std::string LaneText(const Model& board)
{
    return "lane " + Text(board["lane"]) + " " + Text(board["interface"]) + " " +
           Text(board["interface_speed"]);
}

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

// What stands above the ports of a switch.
std::vector<std::string> SwitchText(const Room& room, const Model& device)
{
    const std::string head = "switch " + Text(device["switch"]) + ": " + Text(device["state"]);
    const std::string sizes = "mtu " + Text(device["mtu"]) + ", aging " + Text(device["aging"]);
    const std::string modes =
        "IGMP " + OnOff(device["igmp"]) + ", bridging " + Text(device["bridge_mode"]);
    if (room.wired)
        return {head, sizes + ", " + modes};
    const std::string lane = device["board"].is_null() ? "" : LaneText(device["board"]);
    return {head, lane, sizes, modes};
}

// Height of the drawing of one switch.
int AddSwitch(Picture& picture, const Room& room, const Model& device, const Model& ports, int y)
{
    const size_t outer = picture.boxes.size();
    const Style style = device["state"] == "enabled" ? Style::kPlain : Style::kOff;
    picture.boxes.push_back(
        {room.x, y, room.width, 0, style, Within(room, SwitchText(room, device))});
    const int top = y + 1 + static_cast<int>(picture.boxes[outer].lines.size());
    int count = 0;
    for (const auto& port : ports) {
        if (port["switch"] != device["switch"])
            continue;
        const int column = count % room.portsPerRow;
        const int row = count / room.portsPerRow;
        picture.boxes.push_back(
            PortBox(port, room.x + 1 + column * kPortWidth, top + row * kPortHeight));
        ++count;
    }
    const int rows = (count + room.portsPerRow - 1) / room.portsPerRow;
    picture.boxes[outer].height = top - y + 1 + rows * kPortHeight;
    if (room.wired && !device["board"].is_null())
        picture.wires.push_back(LaneWire(device["board"], y + 2));
    return picture.boxes[outer].height;
}

std::vector<std::string> PhyText(const Room& room, const Model& phy)
{
    const std::string label = phy["label"].is_null() ? "" : " " + Text(phy["label"]);
    const std::string head = "PHY " + Text(phy["phy"]) + label + ": " + Text(phy["state"]);
    const std::string admin = "admin " + OnOff(phy["admin"]);
    if (room.wired)
        return {head + ", " + admin, LinkText(phy)};
    const std::string lane = phy["board"].is_null() ? "" : LaneText(phy["board"]);
    return {head, lane, admin, LinkText(phy)};
}

int AddPhy(Picture& picture, const Room& room, const Model& phy, int y)
{
    const bool on = phy["state"] == "enabled";
    const Style style = !phy["error"].is_null() ? Style::kError
                        : !on                   ? Style::kOff
                        : phy["link"] == true   ? Style::kUp
                                                : Style::kPlain;
    auto lines = Within(room, PhyText(room, phy));
    const int height = 2 + static_cast<int>(lines.size());
    picture.boxes.push_back({room.x, y, room.width, height, style, std::move(lines)});
    if (room.wired && !phy["board"].is_null())
        picture.wires.push_back(LaneWire(phy["board"], y + 1));
    return height;
}

}  // namespace

Picture DrawBoard(const Model& board, size_t columns)
{
    const Room room = RoomWithin(columns);
    Picture picture;
    if (room.wired)
        picture.boxes.push_back({0, 0, kSocWidth, 0, Style::kPlain, {" SoC"}});
    int y = 0;
    for (const auto& device : board["switches"])
        y += AddSwitch(picture, room, device, board["ports"], y);
    for (const auto& phy : board["phys"])
        y += AddPhy(picture, room, phy, y);
    const int least = room.wired ? 3 : 0;
    picture.height = std::max(y, least);
    picture.width = y == 0 ? kSocWidth : room.x + room.width;
    if (room.wired)
        picture.boxes.front().height = picture.height;
    return picture;
}

}  // namespace ctl
