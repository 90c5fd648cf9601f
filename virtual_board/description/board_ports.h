// The cables of a switch in the board file: [[switch.port]].
#pragma once

#include "virtual_board/description/board_file.h"
#include "virtual_board/description/toml_reader.h"

namespace vboard {

// Reads the tables of the last switch and gives its other ports their names.
void ReadPorts(TomlReader& reader, std::vector<SwitchDescription>& switches);

}  // namespace vboard
