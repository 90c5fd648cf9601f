// The client side of `orblink-vboard control`.
#pragma once

#include <optional>
#include <string>

#include "virtual_board/board/journal.h"
#include "virtual_board/board/unique_fd.h"

namespace vboard {

// The socket of the board that is meant: the given one, else that of the board around. nullopt,
// with a complaint: there is none.
std::optional<std::string> BoardSocket(const std::string& given);

// A connection to the board at the path. Throws std::system_error when no board answers there.
UniqueFd ConnectToBoard(const std::string& path);

// Sends a command to the board at the path and returns its answer. Throws std::system_error when
// no board answers there.
Json AskBoard(const std::string& path, const Json& command);

// The same facts as the JSON, for a person.
std::string StateText(const Json& answer);
std::string JournalText(const Json& answer);
std::string RegistersText(const Json& answer);
std::string TraceText(const Json& answer);

}  // namespace vboard
