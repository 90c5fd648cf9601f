// `orblink-vboard control capture`: the frames of a port in a file.
#pragma once

#include <string>

#include "virtual_board/board/journal.h"

namespace vboard {

// Until so many frames were written, or a signal says to end. The exit code. Throws what AskBoard
// throws, and std::system_error when the file cannot be written.
int CaptureCommand(const std::string& socketPath, const Json& command);

}  // namespace vboard
