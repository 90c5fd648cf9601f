// Where finished texts go.
#pragma once

#include <string>

namespace ctl {

// Writes to standard output at once; fails when it cannot.
void WriteOut(const std::string& text);

// Writes a file in place of another one; a reader never sees a half-written one.
void ReplaceFile(const std::string& path, const std::string& text);

}  // namespace ctl
