// Standard input, output and error, whatever the caller has closed.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace program {

// A descriptor that is closed would be given to the next file, region or connection that is opened, and
// what is printed would go there.
inline void OpenStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) == -1)
            // The lowest closed descriptor is this one.
            (void)open("/dev/null", O_RDWR);
}

}  // namespace program
