// The board as a drawing: laid out once, in character cells, for the terminal and for SVG alike.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

enum class Style { kPlain, kUp, kOff, kTest, kError };

struct Box {
    int x;
    int y;
    int width;
    int height;
    Style style;
    std::vector<std::string> lines;
};

// A horizontal line with a text above and one below it.
struct Wire {
    int x;
    int y;
    int width;
    std::string above;
    std::string below;
};

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Box> boxes;
    std::vector<Wire> wires;
};

// Of a model with switches, ports and phys and their links. What is narrower than the whole drawing
// gets the devices alone, with fewer ports in a row.
Picture DrawBoard(const Model& board, size_t columns = SIZE_MAX);

std::string PictureText(const Picture& picture, bool lineCharacters, bool colour);
std::string PictureSvg(const Picture& picture);

}  // namespace ctl
