// The command line of orblink-vboard.
#pragma once

namespace vboard {

// Carries out what the words say; the exit code, 2 for words that say nothing.
int RunCommandLine(int argc, char** argv);

}  // namespace vboard
