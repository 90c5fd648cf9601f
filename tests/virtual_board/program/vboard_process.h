// Running orblink-vboard and shell scripts under it.
#pragma once

#include <optional>
#include <string>

namespace vboard_test {

struct Outcome {
    int status;          // exit status of the shell
    std::string output;  // standard output and standard error together
};

// A shell script with $VBOARD, $RUN (its run command), $CLIENT, $OTHER (the client of the other
// ABI), $PLAIN (plain_container) and $BOARDS set.
Outcome Shell(const std::string& script);

// The script under `$RUN` on one of the boards that come with it. Words for run may follow.
Outcome OnBoard(const std::string& board, const std::string& script,
                const std::string& options = "");

// What makes an ordinary user of the shell's next word, "" when this process is one; nullopt where
// such a user cannot use the build.
std::optional<std::string> AsOrdinaryUser();

// Where namespaces are refused only the library's own names are the board's.
bool NamespacesAreRefused();

// The script's output without the lines in which the board names itself and what it lacks.
std::string Printed(const Outcome& outcome);

// A path in a fresh private directory.
std::string TemporaryPath(const std::string& name);

}  // namespace vboard_test
