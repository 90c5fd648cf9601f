#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "tools/orblink_web/server/command_line.h"

namespace {

// A descriptor that is closed would be given to the next connection, and what is printed would go
// there.
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
    // A client that goes is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    return web::RunCommandLine(argc, argv);
}
