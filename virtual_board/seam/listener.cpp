#include "virtual_board/seam/listener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

// What the C library's kernel headers may be too old for.
#ifndef SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV
#define SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV (1UL << 5)
#endif
#ifndef SECCOMP_IOCTL_NOTIF_SET_FLAGS
#define SECCOMP_IOCTL_NOTIF_SET_FLAGS SECCOMP_IOW(4, __u64)
#endif
#ifndef SECCOMP_USER_NOTIF_FD_SYNC_WAKE_UP
#define SECCOMP_USER_NOTIF_FD_SYNC_WAKE_UP (1UL << 0)
#endif

namespace vboard::seam {
namespace {

size_t NotificationSize()
{
    seccomp_notif_sizes sizes{};
    syscall(SYS_seccomp, SECCOMP_GET_NOTIF_SIZES, 0, &sizes);
    return std::max<size_t>(sizes.seccomp_notif, sizeof(seccomp_notif));
}

int Install(const sock_fprog& program, unsigned long flags)
{
    return static_cast<int>(syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program));
}

}  // namespace

Listener::Listener(UniqueFd fd)
    : fd_{std::move(fd)}, buffer_((NotificationSize() + sizeof(uint64_t) - 1) / sizeof(uint64_t))
{
    // The caller and the board take turns: waking the other on the same processor halves the cost.
    // Kernels before 6.6 do not know it; then it is only slower.
    ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_SET_FLAGS, SECCOMP_USER_NOTIF_FD_SYNC_WAKE_UP);
}

bool Listener::Pending() const
{
    pollfd polled{fd_.Get(), POLLIN, 0};
    return poll(&polled, 1, 0) == 1 && (polled.revents & POLLIN) != 0;
}

std::optional<seccomp_notif> Listener::Receive()
{
    std::ranges::fill(buffer_, 0);
    if (ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_RECV, buffer_.data()) != 0)
        return std::nullopt;
    seccomp_notif notification{};
    memcpy(&notification, buffer_.data(), sizeof notification);
    return notification;
}

bool Listener::IsWaiting(uint64_t id) const
{
    return ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_ID_VALID, &id) == 0;
}

// A caller that was killed meanwhile needs no answer.
void Listener::Respond(uint64_t id, int64_t value, int error, uint32_t flags)
{
    seccomp_notif_resp response{id, value, -error, flags};
    ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_SEND, &response);
}

void Listener::Continue(uint64_t id)
{
    Respond(id, 0, 0, SECCOMP_USER_NOTIF_FLAG_CONTINUE);
}

void Listener::Answer(uint64_t id, int64_t value, int error)
{
    Respond(id, error == 0 ? value : 0, error, 0);
}

int Listener::HandIn(uint64_t id, const HandedIn& descriptor)
{
    seccomp_notif_addfd request{};
    request.id = id;
    request.srcfd = static_cast<uint32_t>(descriptor.fd);
    request.newfd = descriptor.number.value_or(0);
    request.newfd_flags = descriptor.closeOnExec ? O_CLOEXEC : 0;
    const uint32_t where = descriptor.number ? SECCOMP_ADDFD_FLAG_SETFD : 0;
    request.flags = where | SECCOMP_ADDFD_FLAG_SEND;
    if (ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_ADDFD, &request) >= 0)
        return 0;
    if (errno != EINVAL)
        return errno;
    // Kernels before 5.14 take two steps.
    request.flags = where;
    const int number = ioctl(fd_.Get(), SECCOMP_IOCTL_NOTIF_ADDFD, &request);
    if (number < 0)
        return errno;
    Answer(id, number, 0);
    return 0;
}

bool Listener::CanHandIn(int listener)
{
    seccomp_notif_addfd request{};  // for a call that does not exist
    return ioctl(listener, SECCOMP_IOCTL_NOTIF_ADDFD, &request) == 0 || errno == ENOENT;
}

int InstallFilter(const std::vector<sock_filter>& filter)
{
    const sock_fprog program{static_cast<unsigned short>(filter.size()),
                             // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): only read
                             const_cast<sock_filter*>(filter.data())};
    // A caller whose call the board has begun to answer is not interrupted by a signal handler: its
    // memory may be written to.
    constexpr unsigned long kPreferred =
        SECCOMP_FILTER_FLAG_NEW_LISTENER | SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV;
    int fd = Install(program, kPreferred);
    if (fd < 0 && errno == EACCES && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
        fd = Install(program, kPreferred);
    if (fd < 0 && errno == EINVAL)
        fd = Install(program, SECCOMP_FILTER_FLAG_NEW_LISTENER);
    return fd;
}

std::string ExplainRefusal(int error)
{
    if (error == EBUSY)
        return "this process runs on a board already, and a board inside a board is not possible";
    if (error == EINVAL || error == ENOSYS)
        return "this kernel cannot ask the board about system calls: seccomp user notification, "
               "Linux 5.9 or later, is missing";
    return std::string(
               "a sandbox forbids the filter of system calls (seccomp user "
               "notification): ") +
           strerror(error);
}

}  // namespace vboard::seam
