// The program that made a call: its memory, its descriptors, its directories.
#pragma once

#include <linux/seccomp.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "virtual_board/seam/listener.h"
#include "virtual_board/seam/system_calls.h"

namespace vboard::seam {

// Ends the handling of a call: it fails with this errno.
struct CallFails {
    int error;
};

// The caller's memory may not be read: it made itself undumpable, or a sandbox forbids it.
struct Unreadable {};

// What takes longer to find out of a thread than a register access.
class ProcessTable {
public:
    // For the journal: another process may have the number by now.
    pid_t ProcessOf(pid_t thread);
    // A descriptor of the process with this number in the board's own hands; none: it is not open,
    // or the number is that of another thread of a process.
    UniqueFd Take(pid_t process, int fd);

private:
    std::unordered_map<pid_t, pid_t> known_;
    std::unordered_map<pid_t, UniqueFd> handles_;
};

// False with errno.
bool ReadMemoryOf(pid_t thread, uint64_t address, void* into, size_t size);

class Target {
public:
    Target(const Listener& listener, ProcessTable& processes, const seccomp_notif& notification);

    uint64_t Id() const { return id_; }
    pid_t Thread() const { return thread_; }
    pid_t Process() const { return processes_.ProcessOf(thread_); }
    std::optional<seam::Call> Call() const { return call_; }
    bool Is32Bit() const { return is32Bit_; }

    // socketcall() and ipc() are taken apart already.
    uint64_t Argument(size_t index) const { return arguments_[index]; }
    int IntArgument(size_t index) const { return static_cast<int>(arguments_[index]); }

    // All of it, else CallFails{EFAULT} or Unreadable.
    void Read(uint64_t address, void* into, size_t size) const;
    void Write(uint64_t address, const void* from, size_t size) const;
    template <typename Value>
    Value ReadAs(uint64_t address) const
    {
        Value value{};
        Read(address, &value, sizeof value);
        return value;
    }
    // nullopt: there is no path.
    std::optional<std::string> ReadPath(uint64_t address) const;
    // A pointer that lies in the caller's memory.
    uint64_t ReadPointer(uint64_t address) const;
    size_t PointerSize() const { return is32Bit_ ? 4 : 8; }

    bool IsSocket(int fd) const;
    // What /proc says that a descriptor is: "socket:[1234]", a path; empty: not open.
    std::string DescriptorLink(int fd) const;
    // Where a relative path begins.
    std::string DirectoryOf(int fd) const;
    // What /proc says that its network namespace is.
    std::string Network() const { return ReadLink("ns/net"); }

    // A number from kFirstWatched on that the caller may use for one more descriptor.
    std::optional<uint32_t> FreeWatchedNumber() const;
    // The caller's descriptor in the board's own hands.
    UniqueFd TakeDescriptor(int fd) const;

private:
    void TakeApart(uint32_t number);
    std::string ReadLink(const std::string& name) const;

    const Listener& listener_;
    ProcessTable& processes_;
    uint64_t id_;
    pid_t thread_;
    bool is32Bit_;
    uint64_t arguments_[6];
    std::optional<seam::Call> call_;
};

}  // namespace vboard::seam
