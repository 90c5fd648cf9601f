// Everything that was done to the board, in order, in a bounded ring.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "virtual_board/board/board_clock.h"

namespace vboard {

using Json = nlohmann::ordered_json;

enum class JournalKind { kMailbox, kMdio, kGpio, kLane, kGmac, kAttr, kControl };

inline constexpr std::string_view kJournalKindNames[] = {"mailbox", "mdio", "gpio",   "lane",
                                                         "gmac",    "attr", "control"};

// Numbers with names, kept as they are until somebody asks: register accesses are many.
class NamedNumbers {
public:
    // There is room for five.
    void Add(const char* name, uint32_t value) { numbers_.at(count_++) = {name, value}; }
    void AddTo(Json& facts) const;

private:
    struct Number {
        const char* name;
        uint32_t value;
    };
    std::array<Number, 5> numbers_{};
    size_t count_ = 0;
};

struct JournalEntry {
    JournalKind kind;
    std::string call;        // "read", "bind", "reset"...
    Json facts = {};         // null: none
    int error = 0;           // errno of the outcome
    std::string note = {};   // why it failed, or what else is worth knowing
    NamedNumbers more = {};  // facts as well
};

struct JournalQuery {
    std::optional<JournalKind> kind;
    size_t tail = SIZE_MAX;  // the last ones only
};

class Journal {
public:
    explicit Journal(const BoardClock& boardClock, size_t limit = 16384)
        : clock_{boardClock}, capacity_{limit}
    {
    }

    // Whose call the entries that follow belong to; 0 = the board's own.
    void SetCaller(pid_t caller) { pid_ = caller; }

    // Returns entry.error, so that a call can be noted and ended in one statement.
    int Note(JournalEntry entry);

    uint64_t Dropped() const { return dropped_; }
    size_t Size() const { return entries_.size(); }

    // {"dropped": n, "entries": [{"number", "timeNs", "pid", "kind", "call", "facts", "result",
    // "note"}...]}
    Json Show(const JournalQuery& query) const;

private:
    struct Stamped {
        uint64_t number;
        std::chrono::nanoseconds time;
        pid_t pid;
        JournalEntry entry;
    };
    static Json ShowEntry(const Stamped& stamped);

    const BoardClock& clock_;
    size_t capacity_;
    pid_t pid_ = 0;
    uint64_t next_ = 1;
    uint64_t dropped_ = 0;
    std::deque<Stamped> entries_;
};

// "EIO" for an errno, "ok" for 0.
std::string ErrnoName(int error);

std::optional<JournalKind> JournalKindFromName(std::string_view name);

}  // namespace vboard
