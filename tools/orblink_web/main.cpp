#include <csignal>

#include "program/standard_streams.h"
#include "tools/orblink_web/server/command_line.h"

int main(int argc, char** argv)
{
    program::OpenStandardStreams();
    // A client that goes is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    return web::RunCommandLine(argc, argv);
}
