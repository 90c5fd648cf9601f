// The system's log, in which other programs keep the library's lines.
#pragma once

#include <string>

namespace ctl {

// Most lines of the library begin with a function's name and a source line.
bool IsLibraryLine(const std::string& line);

}  // namespace ctl
