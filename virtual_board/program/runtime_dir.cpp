#include "virtual_board/program/runtime_dir.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace vboard {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMaxBoards = 100;
constexpr char kPrefix[] = "orblink-vboard.";
constexpr char kPreloadName[] = "liborblink-vboard-preload.so";

// EI_CLASS of the preloaded library in a directory, 0 when there is none.
int LibraryClass(const fs::path& directory)
{
    char header[EI_NIDENT] = {};
    std::ifstream file{directory / kPreloadName, std::ios::binary};
    if (!file.read(header, sizeof header))
        return ELFCLASSNONE;
    return header[EI_CLASS];
}

// "build/release" -> "build/release-i386" and back.
fs::path SiblingBuild(const fs::path& build)
{
    std::string name = build.filename();
    constexpr std::string_view kSuffix = "-i386";
    bool is32 = name.ends_with(kSuffix);
    return build.parent_path() /
           (is32 ? name.substr(0, name.size() - kSuffix.size()) : name + std::string(kSuffix));
}

std::vector<fs::path> Candidates(const std::vector<std::string>& given)
{
    std::vector<fs::path> all{given.begin(), given.end()};
    fs::path root = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    fs::path builds = root.parent_path();
    all.insert(all.end(), {root / "lib", SiblingBuild(root) / "lib", builds / "release" / "lib",
                           builds / "release-i386" / "lib", root / "lib/x86_64-linux-gnu",
                           root / "lib/i386-linux-gnu", root / "lib32"});
    return all;
}

// Separators of LD_PRELOAD must not occur, nor a directory that the board covers with its own.
bool IsUsableBase(const std::string& base)
{
    bool covered = base.starts_with("/dev/shm") || base.starts_with("/var/tmp");
    return base.starts_with("/") && !covered && base.find_first_of(" :$") == std::string::npos &&
           access(base.c_str(), W_OK | X_OK) == 0;
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

void Link(const std::optional<std::string>& target, const fs::path& link)
{
    if (!target)
        return;
    fs::create_directories(link.parent_path());
    fs::create_directory_symlink(*target, link);
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
        if (Lock(entry.path()))
            fs::remove_all(entry.path(), ignored);
    }
}

}  // namespace

bool HasLibrary(const std::string& directory)
{
    return LibraryClass(directory) != ELFCLASSNONE;
}

LibraryDirs FindLibraries(const std::vector<std::string>& given)
{
    LibraryDirs found;
    for (const fs::path& directory : Candidates(given)) {
        int elfClass = LibraryClass(directory);
        auto& slot = elfClass == ELFCLASS64 ? found.bits64 : found.bits32;
        if (elfClass != ELFCLASSNONE && !slot)
            slot = fs::canonical(directory);
    }
    return found;
}

RuntimeDir::RuntimeDir(const LibraryDirs& libraries)
{
    const std::string base = BaseDir();
    RemoveDeserted(base);
    // The number of a process of another container may be the same.
    const std::string first = base + "/" + kPrefix + std::to_string(getpid());
    for (unsigned number = 0; !lock; ++number) {
        if (number > kMaxBoards)
            throw std::runtime_error("cannot make and lock a directory such as " + first);
        path = number == 0 ? first : first + "." + std::to_string(number);
        if (fs::create_directory(path))
            lock = Lock(path);
    }
    fs::permissions(path, fs::perms::owner_all);
    Link(libraries.bits64, fs::path(path) / "lib/x86_64-linux-gnu");
    Link(libraries.bits32, fs::path(path) / "lib/i386-linux-gnu");
    Link(libraries.bits32, fs::path(path) / "lib32");
}

RuntimeDir::~RuntimeDir()
{
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

std::string RuntimeDir::Preload() const
{
    return LibraryPath() + "/" + kPreloadName;
}

}  // namespace vboard
