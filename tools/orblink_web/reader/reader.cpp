#include "tools/orblink_web/reader/reader.h"

#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "tools/orblink_web/reader/board_identity.h"
#include "tools/orblink_web/reader/log_follower.h"
#include "tools/orblink_web/reader/message.h"
#include "tools/orblink_web/reader/schedule.h"
#include "tools/orblink_web/reader/tool_line.h"

namespace web {

namespace {

// Others want the lock, too.
constexpr int64_t kShortestPause = 10;
constexpr int64_t kLongestPause = 200;

// Whether somebody still reads the other end. A time-out of poll() is real time on every board.
bool PauseListening(int64_t milliseconds)
{
    pollfd end = {kReaderPipe, 0, 0};
    return poll(&end, 1, static_cast<int>(milliseconds)) <= 0;
}

bool Tell(const Message& message)
{
    const std::string line = Encoded(message);
    for (size_t sent = 0; sent < line.size();) {
        const ssize_t count = write(kReaderPipe, line.data() + sent, line.size() - sent);
        if (count == -1 && errno == EINTR)
            continue;
        if (count == -1)
            return false;
        sent += static_cast<size_t>(count);
    }
    return true;
}

// As long at rest as at work, so that a slow board is left time for others; but a link that goes
// down after a long reading is not to wait much longer.
int64_t PauseAfter(int64_t worked, int64_t untilNext)
{
    return std::clamp(std::max(worked, untilNext), kShortestPause, kLongestPause);
}

}  // namespace

int RunReader(const ReaderOptions& options)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    std::signal(SIGPIPE, SIG_IGN);
    ToolLine line(options.namesFile);
    LogFollower log(options.logFile);
    Schedule schedule(options.registerPeriod);
    const BoardIdentity board = PresentBoard();
    int64_t pause = 0;
    while (PauseListening(pause)) {
        if (PresentBoard() != board)
            return 0;
        const int64_t begin = MonotonicMilliseconds();
        Message message;
        message.log = log.NewLines();
        if (const Words* words = schedule.Next(begin)) {
            message.answer = line.Run(*words);
            if (words->empty())
                schedule.Learn(message.answer->text);
        }
        const int64_t worked = MonotonicMilliseconds() - begin;
        if ((message.answer || !message.log.empty()) && !Tell(message))
            return 0;
        pause = PauseAfter(worked, schedule.Wait(MonotonicMilliseconds()));
    }
    return 0;
}

}  // namespace web
