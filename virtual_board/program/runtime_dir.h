// The directory of one running board: its socket, and the libraries of both ABIs under the names
// that the dynamic linker gives to $LIB.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtual_board/board/unique_fd.h"

namespace vboard {

// Where the preloaded library was found for each ABI.
struct LibraryDirs {
    std::optional<std::string> bits64;
    std::optional<std::string> bits32;
};

// Whether the preloaded library of some ABI is in the directory.
bool HasLibrary(const std::string& directory);

// Looks into `given` first, then where a build tree or an installation has them.
LibraryDirs FindLibraries(const std::vector<std::string>& given);

class RuntimeDir {
public:
    // Throws std::filesystem::filesystem_error.
    explicit RuntimeDir(const LibraryDirs& libraries);
    RuntimeDir(const RuntimeDir&) = delete;
    RuntimeDir& operator=(const RuntimeDir&) = delete;
    ~RuntimeDir();

    std::string DefaultSocket() const { return path + "/board.sock"; }
    // Values with a $LIB for the dynamic linker to replace.
    std::string Preload() const;
    std::string LibraryPath() const { return path + "/$LIB"; }

private:
    std::string path;
    UniqueFd lock;  // of the directory: somebody is using it
};

}  // namespace vboard
