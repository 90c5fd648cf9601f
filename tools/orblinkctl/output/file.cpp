#include "tools/orblinkctl/output/file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

// In the directory of the file, so that it can be renamed; nobody can have put it there before.
std::string NameBeside(const std::string& path)
{
    uint64_t chance = 0;
    if (getrandom(&chance, sizeof chance, 0) != sizeof chance)
        chance = static_cast<uint64_t>(getpid());
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".orblinkctl-" + Hex(chance, 16);
}

}  // namespace

void WriteOut(const std::string& text)
{
    const bool written =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    // Nobody reads any more, as behind "| head": no reason to complain.
    if (!written && errno == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    if (!written)
        throw Failure{kFailed, std::string("cannot write the output: ") + std::strerror(errno)};
}

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    struct stat old = {};
    const bool there = lstat(path_.c_str(), &old) == 0;
    if (!there && errno != ENOENT)
        Fail(errno);
    const bool regular = there && S_ISREG(old.st_mode);
    if ((there && !regular) || !OpenBeside(there ? &old : nullptr))
        OpenInPlace();
}

OutputFile::~OutputFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);  // result dropped: the file is not kept, or could not be written
    if (!unfinished_.empty())
        unlink(unfinished_.c_str());
}

// False when the new file could not have owner and mode of the old one, or no file can be made in
// its directory.
bool OutputFile::OpenBeside(const struct stat* old)
{
    const std::string name = NameBeside(path_);
    const mode_t mode = old == nullptr ? 0666 : 0600;
    descriptor_ = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (descriptor_ < 0)
        return false;
    unfinished_ = name;
    if (old == nullptr)
        return true;
    struct stat made = {};
    fstat(descriptor_, &made);
    const bool owned = (made.st_uid == old->st_uid && made.st_gid == old->st_gid) ||
                       fchown(descriptor_, old->st_uid, old->st_gid) == 0;
    if (owned && fchmod(descriptor_, old->st_mode & 07777) == 0)
        return true;
    close(std::exchange(descriptor_, -1));  // result dropped: nothing was written
    unlink(unfinished_.c_str());
    unfinished_.clear();
    return false;
}

void OutputFile::OpenInPlace()
{
    descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        Fail(errno);
}

void OutputFile::Write(const std::string& text)
{
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = write(descriptor_, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR)
            Fail(errno);
        done += count < 0 ? 0 : static_cast<size_t>(count);
    }
}

void OutputFile::Keep()
{
    if (close(std::exchange(descriptor_, -1)) != 0)
        Fail(errno);
    if (unfinished_.empty())
        return;
    if (std::rename(unfinished_.c_str(), path_.c_str()) != 0)
        Fail(errno);
    unfinished_.clear();
}

void OutputFile::Fail(int error) const
{
    throw Failure{error == EACCES || error == EPERM ? kPermission : kFailed,
                  path_ + ": " + std::strerror(error)};
}

void WriteFile(const std::string& path, const std::string& text)
{
    if (path == "-")
        return WriteOut(text);
    OutputFile file(path);
    file.Write(text);
    file.Keep();
}

}  // namespace ctl
