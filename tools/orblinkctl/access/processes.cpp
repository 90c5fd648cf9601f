#include "tools/orblinkctl/access/processes.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace ctl {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

std::string ProcPath(pid_t id, const char* entry)
{
    return "/proc/" + std::to_string(id) + "/" + entry;
}

int64_t BootTime()
{
    std::ifstream file("/proc/stat");
    for (std::string word; file >> word;)
        if (int64_t seconds = 0; word == "btime" && file >> seconds)
            return seconds;
    return 0;
}

enum class Answer { kNo, kYes, kRefused };

Answer HasOpen(pid_t id, dev_t device, ino_t inode)
{
    const std::string path = ProcPath(id, "fd");
    const Directory directory(opendir(path.c_str()));
    if (!directory)
        return errno == EACCES || errno == EPERM ? Answer::kRefused : Answer::kNo;
    while (const dirent* entry = readdir(directory.get())) {
        struct stat file = {};
        if (stat((path + "/" + entry->d_name).c_str(), &file) == 0 && file.st_dev == device &&
            file.st_ino == inode)
            return Answer::kYes;
    }
    return Answer::kNo;
}

// Lines of the form "address permissions offset major:minor inode path".
Answer HasMapped(pid_t id, dev_t device, ino_t inode)
{
    std::ifstream file(ProcPath(id, "maps"));
    if (!file)
        return errno == EACCES || errno == EPERM ? Answer::kRefused : Answer::kNo;
    for (std::string line; std::getline(file, line);) {
        unsigned major = 0;
        unsigned minor = 0;
        unsigned long found = 0;
        // NOLINTNEXTLINE(cert-err34-c): the kernel's numbers are in range
        if (std::sscanf(line.c_str(), "%*s %*s %*s %x:%x %lu", &major, &minor, &found) == 3 &&
            found == inode && makedev(major, minor) == device)
            return Answer::kYes;
    }
    return Answer::kNo;
}

Answer Uses(pid_t id, dev_t device, ino_t inode)
{
    const Answer mapped = HasMapped(id, device, inode);
    return mapped == Answer::kNo ? HasOpen(id, device, inode) : mapped;
}

}  // namespace

std::optional<Process> FindProcess(pid_t id)
{
    std::ifstream file(ProcPath(id, "stat"));
    std::string text;
    if (id <= 0 || !std::getline(file, text, '\0'))
        return std::nullopt;
    // The name stands in parentheses and may hold any character.
    const size_t open = text.find('(');
    const size_t close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos)
        return std::nullopt;
    std::istringstream rest(text.substr(close + 1));
    std::string state;
    rest >> state;
    if (state == "Z" || state == "X")
        return std::nullopt;
    // The start is the 22nd field, the state is the third.
    std::string skipped;
    for (int field = 4; field < 22; ++field)
        rest >> skipped;
    int64_t ticks = 0;
    rest >> ticks;
    return Process{id, text.substr(open + 1, close - open - 1),
                   BootTime() + ticks / sysconf(_SC_CLK_TCK)};
}

FileUsers UsersOf(dev_t device, ino_t inode)
{
    FileUsers users;
    const Directory directory(opendir("/proc"));
    if (!directory) {
        users.hidden = 1;
        return users;
    }
    while (const dirent* entry = readdir(directory.get())) {
        const auto id = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        if (id <= 0 || id == getpid())
            continue;
        const auto process = FindProcess(id);
        if (!process)
            continue;
        const Answer answer = Uses(id, device, inode);
        if (answer == Answer::kYes)
            users.processes.push_back(*process);
        // What even root may not look into is kept apart from this system, as a container's first
        // process is.
        else if (answer == Answer::kRefused && geteuid() != 0)
            ++users.hidden;
    }
    return users;
}

}  // namespace ctl
