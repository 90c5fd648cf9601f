// The directory of one running board: its socket, and its private names.
#pragma once

#include <string>

#include "virtual_board/board/unique_fd.h"

namespace vboard {

class RuntimeDir {
public:
    // Throws std::filesystem::filesystem_error, or std::runtime_error where it can lock none.
    RuntimeDir();
    RuntimeDir(const RuntimeDir&) = delete;
    RuntimeDir& operator=(const RuntimeDir&) = delete;
    ~RuntimeDir();

    std::string DefaultSocket() const { return path_ + "/board.sock"; }
    // An empty directory in it.
    std::string MakeNames() const;

private:
    std::string path_;
    UniqueFd lock_;  // of the directory: somebody is using it
};

}  // namespace vboard
