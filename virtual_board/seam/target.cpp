#include "virtual_board/seam/target.h"

#include <fcntl.h>
#include <limits.h>
#include <linux/audit.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace vboard::seam {
namespace {

constexpr uint64_t kPage = 4096;
constexpr size_t kShortPath = 256;
constexpr size_t kMostKnown = 256;
constexpr size_t kMostHandles = 16;

// A 32-bit board cannot name all addresses of a 64-bit program in an iovec.
constexpr bool kReachesAll = sizeof(void*) == sizeof(uint64_t);

ssize_t Transfer(pid_t pid, uint64_t address, void* data, size_t size, bool write)
{
    if (kReachesAll) {
        const iovec own{data, size};
        // An address of another process, which this one never uses.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        const iovec theirs{reinterpret_cast<void*>(static_cast<uintptr_t>(address)), size};
        return write ? process_vm_writev(pid, &own, 1, &theirs, 1, 0)
                     : process_vm_readv(pid, &own, 1, &theirs, 1, 0);
    }
    const std::string path = "/proc/" + std::to_string(pid) + "/mem";
    const UniqueFd memory{open(path.c_str(), (write ? O_RDWR : O_RDONLY) | O_CLOEXEC)};
    if (!memory)
        return -1;
    const auto offset = static_cast<off64_t>(address);
    return write ? pwrite64(memory.Get(), data, size, offset)
                 : pread64(memory.Get(), data, size, offset);
}

pid_t ReadProcess(pid_t thread)
{
    std::ifstream status{"/proc/" + std::to_string(thread) + "/status"};
    constexpr std::string_view kKey = "Tgid:";
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(kKey))
            return std::stoi(line.substr(kKey.size()));
    return thread;
}

UniqueFd OpenProcess(pid_t process)
{
    return UniqueFd{static_cast<int>(syscall(SYS_pidfd_open, process, 0))};
}

UniqueFd TakeFrom(const UniqueFd& process, int fd)
{
    return UniqueFd{static_cast<int>(syscall(SYS_pidfd_getfd, process.Get(), fd, 0))};
}

[[noreturn]] void Fail()
{
    if (errno == EPERM || errno == EACCES)
        throw Unreadable{};
    throw CallFails{EFAULT};
}

}  // namespace

bool ReadMemoryOf(pid_t thread, uint64_t address, void* into, size_t size)
{
    return Transfer(thread, address, into, size, false) == static_cast<ssize_t>(size);
}

pid_t ProcessTable::ProcessOf(pid_t thread)
{
    if (known_.size() > kMostKnown)
        known_.clear();
    const auto [entry, fresh] = known_.try_emplace(thread, 0);
    if (fresh)
        entry->second = ReadProcess(thread);
    return entry->second;
}

UniqueFd ProcessTable::Take(pid_t process, int fd)
{
    if (handles_.size() > kMostHandles)
        handles_.clear();
    const auto [entry, fresh] = handles_.try_emplace(process);
    if (fresh)
        entry->second = OpenProcess(process);
    UniqueFd taken = TakeFrom(entry->second, fd);
    if (!taken && errno != EBADF)  // it has ended, and the number may be another's
        handles_.erase(entry);
    return taken;
}

Target::Target(const Listener& listener, ProcessTable& processes, const seccomp_notif& notification)
    : listener_{listener},
      processes_{processes},
      id_{notification.id},
      thread_{static_cast<pid_t>(notification.pid)},
      is32Bit_{notification.data.arch == AUDIT_ARCH_I386},
      call_{FindCall(is32Bit_, notification.data.nr)}
{
    std::ranges::copy(notification.data.args, arguments_);
    if (is32Bit_ && notification.data.nr == kSocketCall)
        TakeApart(static_cast<uint32_t>(arguments_[0]));
    else if (is32Bit_ && notification.data.nr == kIpcCall) {
        call_ = Call::kSemaphoreGet;
        std::copy(arguments_ + 1, arguments_ + 4, arguments_);
    }
}

void Target::TakeApart(uint32_t number)
{
    const SocketCall* call = FindSocketCall(number);
    if (call == nullptr) {
        call_ = std::nullopt;
        return;
    }
    call_ = call->call;
    // The kernel reads as many as the call takes; the last may lie at the end of a page.
    uint32_t words[6] = {};
    Read(arguments_[1], words, call->words * sizeof words[0]);
    std::ranges::copy(words, arguments_);
}

void Target::Read(uint64_t address, void* into, size_t size) const
{
    const ssize_t got = Transfer(thread_, address, into, size, false);
    if (got < 0)
        Fail();
    if (!listener_.IsWaiting(id_))
        throw CallFails{EINTR};
    if (static_cast<size_t>(got) != size)
        throw CallFails{EFAULT};
}

void Target::Write(uint64_t address, const void* from, size_t size) const
{
    if (!listener_.IsWaiting(id_))
        throw CallFails{EINTR};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): what is written there is only read here
    const ssize_t put = Transfer(thread_, address, const_cast<void*>(from), size, true);
    if (put < 0)
        Fail();
    if (static_cast<size_t>(put) != size)
        throw CallFails{EFAULT};
}

std::optional<std::string> Target::ReadPath(uint64_t address) const
{
    std::string path;
    char part[kShortPath];
    while (path.size() < PATH_MAX) {
        const uint64_t at = address + path.size();
        // What follows the page may not be there.
        const auto size = std::min(static_cast<size_t>(kPage - at % kPage), sizeof part);
        const ssize_t got = Transfer(thread_, at, part, size, false);
        if (got <= 0 && (errno == EPERM || errno == EACCES))
            throw Unreadable{};
        if (got <= 0)
            return std::nullopt;
        const size_t length = strnlen(part, static_cast<size_t>(got));
        path.append(part, length);
        if (length < static_cast<size_t>(got))
            return listener_.IsWaiting(id_) ? std::optional{path} : std::nullopt;
    }
    return std::nullopt;
}

uint64_t Target::ReadPointer(uint64_t address) const
{
    uint64_t pointer = 0;
    Read(address, &pointer, PointerSize());
    return pointer;
}

std::string Target::ReadLink(const std::string& name) const
{
    char text[PATH_MAX];
    const std::string path = "/proc/" + std::to_string(thread_) + "/" + name;
    const ssize_t size = readlink(path.c_str(), text, sizeof text);
    if (size < 0 && errno == EACCES)
        throw Unreadable{};
    return size < 0 ? std::string{} : std::string(text, static_cast<size_t>(size));
}

std::string Target::DescriptorLink(int fd) const
{
    return ReadLink("fd/" + std::to_string(fd));
}

bool Target::IsSocket(int fd) const
{
    struct stat file {};
    // Half of what the way through /proc costs.
    if (const UniqueFd taken = processes_.Take(thread_, fd))
        return fstat(taken.Get(), &file) == 0 && S_ISSOCK(file.st_mode);
    return DescriptorLink(fd).starts_with("socket:[");
}

std::string Target::DirectoryOf(int fd) const
{
    return fd == AT_FDCWD ? ReadLink("cwd") : DescriptorLink(fd);
}

std::optional<uint32_t> Target::FreeWatchedNumber() const
{
    rlimit limit{};
    if (prlimit(thread_, RLIMIT_NOFILE, nullptr, &limit) != 0)
        return std::nullopt;
    for (uint32_t number = kFirstWatched; number <= kLastWatched && number < limit.rlim_cur;
         ++number)
        if (DescriptorLink(static_cast<int>(number)).empty())
            return number;
    return std::nullopt;
}

UniqueFd Target::TakeDescriptor(int fd) const
{
    // Not what the table remembers: the number may have become another process's.
    return TakeFrom(OpenProcess(ReadProcess(thread_)), fd);
}

}  // namespace vboard::seam
