#include "tests/robustness/child.h"

#include <dirent.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace obtest {
namespace {

// True when the process has ended before the time was over.
bool EndsWithin(int pid, int milliseconds)
{
    const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (fd == -1)
        throw std::runtime_error("pidfd_open");
    pollfd ready = {fd, POLLIN, 0};
    const int count = poll(&ready, 1, milliseconds);
    close(fd);
    return count == 1;
}

int Reap(int pid)
{
    int status = -1;
    waitpid(pid, &status, 0);
    return status;
}

std::string Contents(int fd)
{
    std::string text;
    char part[4096];
    for (ssize_t got = read(fd, part, sizeof(part)); got > 0; got = read(fd, part, sizeof(part)))
        text.append(part, static_cast<size_t>(got));
    return text;
}

}  // namespace

Ended InChild(const std::function<std::string()>& work, int milliseconds, Exit how)
{
    // A file, not a pipe: what the child says may be longer than a pipe holds.
    FILE* const said = tmpfile();
    if (said == nullptr)
        throw std::runtime_error("tmpfile");
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        const std::string text = work();
        if (write(fileno(said), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            _exit(1);
        if (how == Exit::kAtOnce)
            _exit(0);
        exit(0);
    }
    Ended ended;
    ended.inTime = EndsWithin(pid, milliseconds);
    if (!ended.inTime)
        kill(pid, SIGKILL);
    const int status = Reap(pid);
    ended.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    lseek(fileno(said), 0, SEEK_SET);
    ended.text = Contents(fileno(said));
    fclose(said);
    return ended;
}

Background::Background(const std::function<void()>& work)
{
    fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        work();
        exit(0);
    }
}

Background::~Background()
{
    Kill();
}

bool Background::Succeeds(int milliseconds)
{
    if (!EndsWithin(pid_, milliseconds))
        return false;
    const int status = Reap(pid_);
    pid_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void Background::Kill()
{
    if (pid_ == -1)
        return;
    kill(pid_, SIGKILL);
    Reap(pid_);
    pid_ = -1;
}

int OpenDescriptors()
{
    DIR* const entries = opendir("/proc/self/fd");
    int count = -1;  // the directory's own
    while (const dirent* entry = readdir(entries))
        count += entry->d_name[0] != '.' ? 1 : 0;
    closedir(entries);
    return count;
}

}  // namespace obtest
