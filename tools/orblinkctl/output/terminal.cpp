#include "tools/orblinkctl/output/terminal.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace ctl {

namespace {

volatile std::sig_atomic_t endRequested = 0;

void RequestEnd(int)
{
    endRequested = 1;
}

constexpr int kEndSignals[] = {SIGINT, SIGTERM, SIGHUP};

constexpr char kEnter[] = "\033[?1049h\033[?25l";
constexpr char kLeave[] = "\033[?25h\033[?1049l";

}  // namespace

bool EndRequested()
{
    return endRequested != 0;
}

void CatchEndSignals()
{
    struct sigaction action = {};
    action.sa_handler = RequestEnd;
    for (const int number : kEndSignals)
        sigaction(number, &action, nullptr);
}

CaughtEndSignals::~CaughtEndSignals()
{
    for (const int number : kEndSignals)
        std::signal(number, SIG_DFL);
}

char WaitForKey(double seconds)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const bool keys = isatty(STDIN_FILENO) != 0;
    if (poll(&input, keys ? 1 : 0, static_cast<int>(seconds * 1000)) <= 0)
        return 0;
    char key = 0;
    if (read(STDIN_FILENO, &key, 1) != 1)
        endRequested = 1;
    return key;
}

LiveScreen::LiveScreen() : changed_(tcgetattr(STDIN_FILENO, &before_) == 0)
{
    if (changed_) {
        termios raw = before_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);  // result dropped: keys need Enter then
    }
    std::fputs(kEnter, stdout);
    std::fflush(stdout);
}

LiveScreen::~LiveScreen()
{
    std::fputs(kLeave, stdout);
    std::fflush(stdout);
    if (changed_)
        tcsetattr(STDIN_FILENO, TCSANOW, &before_);  // result dropped: the terminal is gone
}

}  // namespace ctl
