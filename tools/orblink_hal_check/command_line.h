#pragma once

namespace halcheck {

// The program: its exit code.
int RunCommandLine(int argc, char** argv);

}  // namespace halcheck
