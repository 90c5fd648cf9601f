#include "virtual_board/program/command_line.h"

int main(int argc, char** argv)
{
    return vboard::RunCommandLine(argc, argv);
}
