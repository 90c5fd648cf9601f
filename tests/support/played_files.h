// Files of a board that a test machine does not have.
#pragma once

#include <cstdio>
#include <string>

namespace obtest {

// A descriptor that can be closed and refuses nothing; what is done with it is played elsewhere.
int PlayedDescriptor();

// A stream for one of the platform's attributes, or null with ENOENT. A write is recorded as
// "sys write(18, "0")" with the last part of the path; "fwrite" failures surface when it is
// flushed.
FILE* PlayedAttribute(const std::string& path);

// The file of a scripted HAL library ("a" -> .../libscripted_hal_a.so).
std::string ScriptedLibraryPath(const std::string& which);

}  // namespace obtest
