// The command line of the program.
#pragma once

namespace web {

// Serves, or reads the board for the one that does; the result is the exit code.
int RunCommandLine(int argc, char** argv);

}  // namespace web
