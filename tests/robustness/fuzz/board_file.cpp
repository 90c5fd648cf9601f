// A board file; what can be read makes messages of board data.
#include "virtual_board/description/board_file.h"
#include "virtual_board/board/board_data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace vboard;
    std::string_view text{reinterpret_cast<const char*>(data), size};
    auto read = ParseBoard(text, "board.toml");
    const auto* description = std::get_if<BoardDescription>(&read);
    bool said = description != nullptr || !std::get<BoardFileErrors>(read).empty();
    if (!said)
        __builtin_trap();
    for (Family family : {Family::kSwitch, Family::kPhy})
        if (description != nullptr && BoardDataMessage(*description, family).empty())
            __builtin_trap();
    return 0;
}
