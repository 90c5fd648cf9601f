// What `orblink-vboard control` does to a board. A command is {"verb": ..., arguments}; the answer
// is {"schema": 1, "ok": true, ...} or {"schema": 1, "ok": false, "error": text, "exit": code}.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "virtual_board/board/exit_codes.h"
#include "virtual_board/board/virtual_board.h"

namespace vboard {

struct ControlArgument {
    enum class Form {
        kText,
        kWord,       // one of `words`
        kNumber,     // from min to max, or one of `words` for its number
        kFlag,       // true when given
        kDevice,     // "sw0", "phy1"
        kPort,       // "sw0:2", "phy0": "device" and "port" in the command
        kRegisters,  // "0x10", "0x10-0x1f": "first" and "last" in the command
        kChance,     // "1%", "0.5%": parts per million
        kTime,       // "10ms", "500us": nanoseconds
        kFrame,      // hexadecimal octets, with or without ':', from the destination address on
        kFile,       // of the one who asks: not part of the command
    };
    struct Word {
        std::string_view text;
        uint64_t number = 0;
    };

    std::string_view name;  // an option when it begins with "--"
    std::string_view key;   // of the command
    Form form;
    std::string_view help;
    bool required = false;
    std::span<const Word> words = {};
    uint64_t min = 0;
    uint64_t max = UINT64_MAX;
    std::optional<uint64_t> standard = std::nullopt;  // what a number is that is not given
};

// One row of the table of verbs; the command line and its help follow it.
struct ControlVerb {
    enum class Answer { kNothing, kTree, kJournal, kRegisters, kTrace, kCapture };

    std::string_view name;
    std::string_view help;
    std::span<const ControlArgument> arguments;
    Json (*run)(VirtualBoard& board, const Json& command);
    Answer answer = Answer::kNothing;
    bool changes = true;  // goes into the journal
    bool listed = true;   // a word of the command line
    bool faults = false;  // its help lists them
};

std::span<const ControlVerb> ControlVerbs();

Json Control(VirtualBoard& board, const Json& command);

}  // namespace vboard
