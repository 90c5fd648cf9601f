// A board in another process, over its socket.
#pragma once

#include <string>

#include "virtual_board/board/board_side.h"

namespace vboard {

class RemoteBoard : public BoardSide {
public:
    // Throws std::system_error.
    explicit RemoteBoard(const std::string& path);

    // A board that has gone answers everything with ENODEV.
    Reply Ask(const Question& question) override;

private:
    UniqueFd socket_;
};

}  // namespace vboard
