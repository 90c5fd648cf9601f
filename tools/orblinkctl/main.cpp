#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "program/standard_streams.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/session.h"

namespace {

int Complete(const std::vector<std::string>& words)
{
    for (const auto& word : ctl::Completions(words))
        std::printf("%s\n", word.c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    program::OpenStandardStreams();
    // A write that fails says so; what else is written must not end with it.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    // Unfinished words are not to be judged as a command line.
    if (!arguments.empty() && arguments.front() == "--complete")
        return Complete({arguments.begin() + 1, arguments.end()});
    return ctl::RunLine(arguments);
}
