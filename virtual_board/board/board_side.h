// What the board is asked by whoever stands between it and the programs: in its own process, or
// over its socket.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/board/wire.h"

namespace vboard {

struct Question {
    pid_t process = 0;  // who made the call
    wire::Op op{};
    uint32_t arg = 0;
    std::span<const uint8_t> data = {};
    int descriptor = -1;  // goes to the board with the question; stays the asker's
};

struct Reply {
    int32_t result = 0;
    int32_t error = 0;
    std::vector<uint8_t> data = {};
    UniqueFd descriptor = {};
};

class BoardSide {
public:
    BoardSide() = default;
    BoardSide(const BoardSide&) = delete;
    BoardSide& operator=(const BoardSide&) = delete;
    virtual ~BoardSide() = default;

    virtual Reply Ask(const Question& question) = 0;
};

template <typename Value>
std::span<const uint8_t> BytesOf(const Value& value)
{
    return {reinterpret_cast<const uint8_t*>(&value), sizeof value};
}

// False when the reply does not hold exactly one.
template <typename Value>
bool ReadReply(const Reply& reply, Value& value)
{
    if (reply.data.size() != sizeof value)
        return false;
    memcpy(&value, reply.data.data(), sizeof value);
    return true;
}

}  // namespace vboard
