#include <csignal>
#include <string>
#include <vector>

#include "tools/orblinkctl/session.h"

int main(int argc, char** argv)
{
    // A closed pipe is a failed write with a message, not a silent end.
    std::signal(SIGPIPE, SIG_IGN);
    return ctl::RunLine(std::vector<std::string>(argv + 1, argv + argc));
}
