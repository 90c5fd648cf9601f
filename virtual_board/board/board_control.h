// What `orblink-vboard control` does to a board. A command is {"verb": ..., arguments}; the answer
// is {"schema": 1, "ok": true, ...} or {"schema": 1, "ok": false, "error": text, "exit": code}.
#pragma once

#include <functional>
#include <map>
#include <string_view>

#include "virtual_board/board/virtual_board.h"

namespace vboard {

inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNoSuchObject = 3;
inline constexpr int kExitNotSupported = 5;

class BoardControl {
public:
    explicit BoardControl(VirtualBoard& board) : board_{board} {}

    Json Run(const Json& command);

private:
    using Verb = Json (BoardControl::*)(const Json&);
    static const std::map<std::string_view, Verb>& Verbs();

    Json ShowState(const Json& command);
    Json ShowJournal(const Json& command);
    Json SetBattery(const Json& command);
    Json SetLink(const Json& command);
    Json AddFault(const Json& command);
    Json ClearFaults(const Json& command);
    Json Learn(const Json& command);
    Json Forget(const Json& command);
    Json AddCounter(const Json& command);
    Json ShowRegisters(const Json& command);
    Json SendAgain(const Json& command);
    Json ShowHosts(const Json& command);
    Json ShowNetwork(const Json& command);

    void Note(const Json& command);
    const cables::Lans& Lans() const;
    const Device& FindDevice(const Json& command);
    MdioDevice& FindChip(const Json& command);
    Json ShowDevice(const Device& device);
    Json ShowDevices();

    VirtualBoard& board_;
};

}  // namespace vboard
