#include <fcntl.h>
#include <unistd.h>

#include "tools/orblink_hal_check/command_line.h"

namespace {

// A descriptor that is closed would be given to the next file that is opened, and the report would go
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
    return halcheck::RunCommandLine(argc, argv);
}
