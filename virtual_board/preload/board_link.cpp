#include "virtual_board/preload/board_link.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vboard::preload {
namespace {

void Complain(const char* path)
{
    char line[256];
    int length = snprintf(line, sizeof line, "orblink-vboard: no board answers at %s: %s\n", path,
                          strerror(errno));
    if (length > 0)
        syscall(SYS_write, STDERR_FILENO, line, strnlen(line, sizeof line));
}

int ConnectTo(int fd, const char* path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    long result;
    do
        result = syscall(SYS_connect, fd, &address, sizeof address);
    while (result < 0 && errno == EINTR);
    return static_cast<int>(result);
}

bool SendParts(int fd, iovec* parts, size_t count)
{
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = count;
    long sent;
    do
        sent = syscall(SYS_sendmsg, fd, &message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

}  // namespace

const char* BoardPath()
{
    const char* path = getenv(wire::kSocketVariable);
    return path != nullptr && *path != '\0' ? path : nullptr;
}

int Connect()
{
    const char* path = BoardPath();
    auto fd = static_cast<int>(syscall(SYS_socket, AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (fd < 0 || ConnectTo(fd, path) == 0)
        return fd;
    int error = errno;
    Complain(path);
    Disconnect(fd);
    errno = error;
    return -1;
}

void Disconnect(int fd)
{
    int error = errno;
    syscall(SYS_close, fd);
    errno = error;
}

bool Post(int fd, const wire::Request& request, const void* data)
{
    wire::Request header = request;
    iovec parts[] = {{&header, sizeof header}, {const_cast<void*>(data), request.dataSize}};
    return SendParts(fd, parts, 2);
}

bool PostText(int fd, const void* text, size_t size)
{
    iovec part{const_cast<void*>(text), size};
    return SendParts(fd, &part, 1);
}

long Await(int fd, Buffer answer, wire::Reply* header, int flags)
{
    wire::Reply reply{};
    iovec parts[] = {{&reply, sizeof reply}, {answer.data, answer.size}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    long received = syscall(SYS_recvmsg, fd, &message, flags);
    if (received < 0)
        return -1;
    if (static_cast<size_t>(received) < sizeof reply)
        reply.error = ECONNRESET;
    if (header != nullptr)
        *header = reply;
    if (reply.error == 0)
        return reply.result;
    errno = reply.error;
    return -1;
}

long AwaitUninterrupted(int fd, Buffer answer, wire::Reply* header)
{
    long result;
    do {
        errno = 0;
        result = Await(fd, answer, header);
    } while (result < 0 && errno == EINTR);
    return result;
}

long Ask(int fd, wire::Op op, uint32_t arg, Buffer data, Buffer answer)
{
    wire::Request request{wire::kMagic, op, arg, static_cast<uint32_t>(data.size)};
    return Post(fd, request, data.data) ? AwaitUninterrupted(fd, answer) : -1;
}

long AskOnce(wire::Op op, uint32_t arg, Buffer data, Buffer answer)
{
    int fd = Connect();
    if (fd < 0)
        return -1;
    long result = Ask(fd, op, arg, data, answer);
    Disconnect(fd);
    return result;
}

unsigned long long SocketCookie(int fd)
{
    int error = errno;
    unsigned long long cookie = 0;
    socklen_t size = sizeof cookie;
    if (syscall(SYS_getsockopt, fd, SOL_SOCKET, SO_COOKIE, &cookie, &size) != 0)
        cookie = 0;
    errno = error;
    return cookie;
}

}  // namespace vboard::preload
