#include "program/standard_streams.h"
#include "virtual_board/program/command_line.h"

int main(int argc, char** argv)
{
    program::OpenStandardStreams();
    return vboard::RunCommandLine(argc, argv);
}
