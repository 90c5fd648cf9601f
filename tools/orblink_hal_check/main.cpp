#include "program/standard_streams.h"
#include "tools/orblink_hal_check/command_line.h"

int main(int argc, char** argv)
{
    program::OpenStandardStreams();
    return halcheck::RunCommandLine(argc, argv);
}
