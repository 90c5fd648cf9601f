#include "tools/orblink_web/reader/log_follower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "tools/orblinkctl/access/system_log.h"

namespace web {

namespace {

// How much of an old file is looked at, and of a line that does not end.
constexpr off_t kTail = off_t{256} * 1024;
constexpr size_t kLongestLine = 4096;
// In one call: what floods the log must not keep the board waiting.
constexpr off_t kMostBytes = off_t{64} * 1024;

}  // namespace

LogFollower::LogFollower(std::string path) : path_(std::move(path)) {}

// A FIFO or a terminal would hold the reader up.
bool LogFollower::Open()
{
    struct stat named = {};
    if (stat(path_.c_str(), &named) == -1 || !S_ISREG(named.st_mode))
        return static_cast<bool>(file_);
    if (file_ && named.st_ino == inode_ && named.st_size >= offset_)
        return true;
    file_ = ctl::UniqueDescriptor(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    inode_ = named.st_ino;
    offset_ = first_ ? std::max<off_t>(0, named.st_size - kTail) : 0;
    // What is left of a line whose beginning lies before is none of the library's.
    unfinished_.clear();
    first_ = false;
    return static_cast<bool>(file_);
}

void LogFollower::Take(std::vector<std::string>& lines)
{
    if (ctl::IsLibraryLine(unfinished_))
        lines.push_back(unfinished_);
    unfinished_.clear();
}

std::vector<std::string> LogFollower::NewLines()
{
    std::vector<std::string> lines;
    if (!Open())
        return lines;
    char piece[8192];
    ssize_t count = 0;
    const off_t end = offset_ + kMostBytes;
    while (offset_ < end && (count = pread(file_.Get(), piece, sizeof piece, offset_)) > 0) {
        offset_ += count;
        for (const char c : std::string_view(piece, static_cast<size_t>(count))) {
            if (c == '\n')
                Take(lines);
            else if (unfinished_.size() < kLongestLine)
                unfinished_ += c;
        }
    }
    return lines;
}

}  // namespace web
