#include "tools/orblink_hal_check/command_line.h"

int main(int argc, char** argv)
{
    return halcheck::RunCommandLine(argc, argv);
}
