#include "virtual_board/program/runtime_dir.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace vboard {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMaxBoards = 100;
constexpr char kPrefix[] = "orblink-vboard.";

// Not a directory that the board covers with its own.
bool IsUsableBase(const std::string& base)
{
    const bool covered = base.starts_with("/dev/shm") || base.starts_with("/var/tmp");
    return base.starts_with("/") && !covered && access(base.c_str(), W_OK | X_OK) == 0;
}

std::string BaseDir()
{
    const char* given = getenv("XDG_RUNTIME_DIR");
    for (const std::string& base :
         {std::string(given != nullptr ? given : ""), std::string("/run")})
        if (IsUsableBase(base))
            return base;
    return "/tmp";
}

// The directory, locked; nothing when somebody else holds its lock, or has removed it.
UniqueFd Lock(const fs::path& directory)
{
    UniqueFd fd{open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
    struct stat status {};
    const bool own = fd && flock(fd.Get(), LOCK_EX | LOCK_NB) == 0 &&
                     fstat(fd.Get(), &status) == 0 && status.st_nlink > 0 &&
                     status.st_uid == geteuid();
    return own ? std::move(fd) : UniqueFd{};
}

// What killed boards have left. What cannot be removed is in nobody's way.
void RemoveDeserted(const std::string& base)
{
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(base, ignored)) {
        if (!entry.path().filename().string().starts_with(kPrefix))
            continue;
        if (const UniqueFd lock = Lock(entry.path()))
            fs::remove_all(entry.path(), ignored);
    }
}

}  // namespace

RuntimeDir::RuntimeDir()
{
    const std::string base = BaseDir();
    RemoveDeserted(base);
    // The number of a process of another container may be the same.
    const std::string first = base + "/" + kPrefix + std::to_string(getpid());
    for (unsigned number = 0; !lock_; ++number) {
        if (number > kMaxBoards)
            throw std::runtime_error("cannot make and lock a directory such as " + first);
        path_ = number == 0 ? first : first + "." + std::to_string(number);
        if (mkdir(path_.c_str(), S_IRWXU) == 0)
            lock_ = Lock(path_);
        else if (errno != EEXIST)
            throw fs::filesystem_error("cannot create directory", path_,
                                       {errno, std::generic_category()});
    }
    fs::permissions(path_, fs::perms::owner_all);
}

RuntimeDir::~RuntimeDir()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string RuntimeDir::MakeNames() const
{
    std::string names = path_ + "/names";
    fs::create_directory(names);
    return names;
}

}  // namespace vboard
