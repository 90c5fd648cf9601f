#include "tests/switch/call/other_process.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace obtest {

OtherProcess::OtherProcess(std::function<std::string()> work)
{
    int start[2];
    int result[2];
    if (pipe(start) != 0 || pipe(result) != 0)
        throw std::runtime_error("pipe");
    pid_ = fork();
    if (pid_ == 0) {
        close(start[1]);
        close(result[0]);
        char go = 0;
        if (read(start[0], &go, 1) == 1) {
            const std::string text = work();
            if (write(result[1], text.data(), text.size()) < 0)
                _exit(1);
        }
        _exit(0);
    }
    close(start[0]);
    close(result[1]);
    start_ = start[1];
    result_ = result[0];
}

OtherProcess::~OtherProcess()
{
    if (pid_ != -1)
        Kill();
    close(start_);
    close(result_);
}

void OtherProcess::Start()
{
    ASSERT_EQ(write(start_, "g", 1), 1);
}

std::string OtherProcess::Result()
{
    std::string text;
    char part[4096];
    for (ssize_t got = read(result_, part, sizeof(part)); got > 0;
         got = read(result_, part, sizeof(part)))
        text.append(part, static_cast<size_t>(got));
    Reap();
    return text;
}

std::string OtherProcess::Run()
{
    Start();
    return Result();
}

void OtherProcess::Kill()
{
    kill(pid_, SIGKILL);
    Reap();
}

void OtherProcess::Reap()
{
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

void InitElsewhere(const SwitchBoard& board, uint32_t arg)
{
    OtherProcess initialiser([&] {
        Platform().mailbox.push_back(board.Message());
        const int result = ORBLINK_InitOnce(arg);
        return result == 0 ? "initialised" : Joined(Platform().transcript.All());
    });
    ASSERT_EQ(initialiser.Run(), "initialised");
}

bool Eventually(const std::function<bool()>& condition)
{
    for (int tries = 0; tries < 1000; ++tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace obtest
