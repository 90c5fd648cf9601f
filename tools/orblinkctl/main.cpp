#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/session.h"

namespace {

int Complete(const std::vector<std::string>& words)
{
    for (const auto& word : ctl::Completions(words))
        std::printf("%s\n", word.c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

// A descriptor that is closed would be given to the next file that is opened, and what is printed
// would go there.
void OpenStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) == -1)
            // The lowest closed descriptor is this one.
            (void)open("/dev/null", O_RDWR);
}

}  // namespace

int main(int argc, char** argv)
{
    OpenStandardStreams();
    // A write that fails says so; what else is written must not end with it.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    // Unfinished words are not to be judged as a command line.
    if (!arguments.empty() && arguments.front() == "--complete")
        return Complete({arguments.begin() + 1, arguments.end()});
    return ctl::RunLine(arguments);
}
