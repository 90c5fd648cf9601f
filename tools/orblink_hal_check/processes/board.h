// The virtual board that a library is checked on.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace halcheck {

struct BoardWish {
    std::string hal;   // the name that the board data give
    bool hasSwitches;  // families of the library
    bool hasPhys;
};

// One device of each family, with the chips that the virtual board has.
std::string OwnBoard(const BoardWish& wish);
// The board of a file, its devices of the families driven by the library and the others left out;
// nothing, with the reason, when the file is none or has no such device.
std::optional<std::string> BoardOfFile(const std::string& path, const BoardWish& wish,
                                       std::string& complaint);

// Runs a command on a board, its standard error and the board's in a file; its exit code, or that of
// orblink-vboard.
int RunOnBoard(const std::string& boardFile, const std::vector<std::string>& command,
               const std::string& errors);

// Stations speak behind the switch, so that its MAC table has entries.
void TeachAddresses(int devIdx);

}  // namespace halcheck
