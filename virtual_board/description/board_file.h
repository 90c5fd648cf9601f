// Reading of a board's description from its TOML file.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "virtual_board/description/board_description.h"

namespace vboard {

// All complaints about the file, each "FILE:LINE:COLUMN: what was expected".
using BoardFileErrors = std::vector<std::string>;

std::variant<BoardDescription, BoardFileErrors> LoadBoardFile(const std::string& path);
std::variant<BoardDescription, BoardFileErrors> ParseBoard(std::string_view text,
                                                           std::string_view path);

}  // namespace vboard
