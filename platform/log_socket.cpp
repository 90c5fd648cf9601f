#include "platform/log_socket.h"

#include <fcntl.h>
#include <linux/net.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace obplatform {
namespace {

// Straight to the kernel: a program that takes over socket() and its like, to play a device, must
// not find the sink's own calls among those of the code that logs.
#ifdef SYS_socketcall
template <typename... Words>
long SocketCall(int call, Words... words)  // the only way in on i386 before Linux 4.3
{
    const long arguments[] = {words...};
    return syscall(SYS_socketcall, call, arguments);
}
constexpr int kSocket = SYS_SOCKET;
constexpr int kConnect = SYS_CONNECT;
constexpr int kSendTo = SYS_SENDTO;
constexpr int kGetSockOpt = SYS_GETSOCKOPT;
#else
template <typename... Words>
long SocketCall(long call, Words... words)
{
    return syscall(call, words...);
}
constexpr long kSocket = SYS_socket;
constexpr long kConnect = SYS_connect;
constexpr long kSendTo = SYS_sendto;
constexpr long kGetSockOpt = SYS_getsockopt;
#endif

long Word(const void* address)
{
    return reinterpret_cast<long>(address);
}

// Descriptor and the kernel's own number for the socket behind it in one word, so that threads agree
// on both: descriptors are used again, those numbers are not. 0 = no socket.
constexpr unsigned kFdBits = sizeof(uintptr_t) == 8 ? 32 : 20;
constexpr uintptr_t kFdMask = (uintptr_t{1} << kFdBits) - 1;
constinit std::atomic<uintptr_t> kept{0};
static_assert(std::atomic<uintptr_t>::is_always_lock_free);

uintptr_t WordFor(int fd)
{
    uint64_t cookie = 0;  // stays 0 before Linux 4.6
    socklen_t size = sizeof(cookie);
    if (SocketCall(kGetSockOpt, long{fd}, long{SOL_SOCKET}, long{SO_COOKIE}, Word(&cookie),
                   Word(&size)) != 0 &&
        errno != ENOPROTOOPT)
        return 0;
    return static_cast<uintptr_t>(cookie) << kFdBits | (static_cast<uintptr_t>(fd) + 1);
}

int DescriptorIn(uintptr_t word)
{
    return static_cast<int>(word & kFdMask) - 1;
}

// Never 0, 1 or 2: a program may have closed its standard streams, and its next printed line would
// go to the log.
int OpenDescriptor()
{
    const int fd =
        static_cast<int>(SocketCall(kSocket, long{AF_UNIX}, long{SOCK_DGRAM | SOCK_CLOEXEC}, 0L));
    if (fd < 0 || fd > STDERR_FILENO)
        return fd;
    const auto moved = static_cast<int>(syscall(SYS_fcntl, fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (moved < 0)
        return fd;
    syscall(SYS_close, fd);
    return moved;
}

// The process's socket; opened anew when the program has closed it, as daemons do, and has perhaps
// another file under its number by now. That one is left alone.
int Descriptor()
{
    uintptr_t word = kept.load(std::memory_order_acquire);
    if (word != 0 && WordFor(DescriptorIn(word)) == word)
        return DescriptorIn(word);
    const int fd = OpenDescriptor();
    if (fd < 0)
        return -1;
    const bool fits = static_cast<uintptr_t>(fd) < kFdMask;
    if (fits && kept.compare_exchange_strong(word, WordFor(fd), std::memory_order_acq_rel))
        return fd;
    syscall(SYS_close, fd);  // another thread was faster
    return fits ? DescriptorIn(word) : -1;
}

bool Send(int fd, const char* data, size_t size)
{
    return SocketCall(kSendTo, long{fd}, Word(data), static_cast<long>(size),
                      long{MSG_DONTWAIT | MSG_NOSIGNAL}, 0L, 0L) >= 0;
}

bool Connect(int fd)
{
    const sockaddr_un daemon = LogDaemonAddress();
    return SocketCall(kConnect, long{fd}, Word(&daemon), long{sizeof(daemon)}) == 0;
}

bool HasNoListener(int error)
{
    return error == ENOTCONN || error == ECONNREFUSED || error == ECONNRESET;
}

// Where no daemon listens a line costs little: its socket is looked for every 10 ms only.
constexpr uint32_t kSearchMilliseconds = 10;
constinit std::atomic<uint32_t> missedAt{0};  // 0 = a daemon was there

uint32_t Milliseconds()
{
    struct {
        long seconds, nanoseconds;
    } now = {};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    const auto milliseconds = static_cast<uint32_t>(now.seconds) * 1000U +
                              static_cast<uint32_t>(now.nanoseconds / 1'000'000);
    return milliseconds == 0 ? 1 : milliseconds;
}

bool WasMissedLately()
{
    const uint32_t missed = missedAt.load(std::memory_order_relaxed);
    return missed != 0 && Milliseconds() - missed < kSearchMilliseconds;
}

}  // namespace

bool SendLogDatagram(const char* data, size_t size)
{
    if (WasMissedLately())
        return false;
    const int fd = Descriptor();
    if (fd < 0)
        return false;
    if (Send(fd, data, size))
        return true;
    if (!HasNoListener(errno))
        return false;
    // The daemon is new, or was started again.
    const bool found = Connect(fd);
    missedAt.store(found ? 0 : Milliseconds(), std::memory_order_relaxed);
    return found && Send(fd, data, size);
}

}  // namespace obplatform
