// Sockets of address family 43: each is a connection to the board process.

#include <sys/socket.h>

#include <cerrno>

#include "virtual_board/preload/board_link.h"
#include "virtual_board/preload/descriptors.h"
#include "virtual_board/preload/next.h"

using namespace vboard;
using namespace vboard::preload;

namespace {

int OpenMailbox(int type)
{
    int fd = Connect();
    if (fd < 0)
        return -1;
    if (Ask(fd, wire::Op::kSocket, static_cast<uint32_t>(type)) < 0) {
        Disconnect(fd);
        return -1;
    }
    return Remember(fd, DescriptorKind::kMailbox);
}

ssize_t ReceiveMail(int fd, Descriptor& mailbox, Buffer into, int flags)
{
    wire::Request request{wire::kMagic, wire::Op::kReceive, static_cast<uint32_t>(flags), 0};
    if (!mailbox.answerDue && !Post(fd, request, nullptr))
        return -1;
    mailbox.answerDue = true;
    long length = Await(fd, into);
    if (length < 0 && errno == EINTR)
        return -1;
    mailbox.answerDue = false;
    bool cut = length > 0 && static_cast<size_t>(length) > into.size;
    return cut && (flags & MSG_TRUNC) == 0 ? static_cast<ssize_t>(into.size) : length;
}

ssize_t SendMail(int fd, const void* data, size_t size)
{
    if (size > wire::kMaxData) {
        errno = EMSGSIZE;
        return -1;
    }
    return Ask(fd, wire::Op::kSend, 0, {const_cast<void*>(data), size});
}

}  // namespace

extern "C" {

int socket(int domain, int type, int protocol) noexcept
{
    if (domain == wire::kMailboxFamily && BoardPath() != nullptr)
        return OpenMailbox(type);
    return VBOARD_NEXT(socket)(domain, type, protocol);
}

int bind(int fd, const sockaddr* address, socklen_t size) noexcept
{
    if (Find(fd, DescriptorKind::kMailbox) == nullptr)
        return VBOARD_NEXT(bind)(fd, address, size);
    if (size > sizeof(sockaddr_storage)) {
        errno = EINVAL;
        return -1;
    }
    Buffer data{const_cast<sockaddr*>(address), size};
    return static_cast<int>(Ask(fd, wire::Op::kBind, 0, data));
}

ssize_t send(int fd, const void* data, size_t size, int flags)
{
    if (Find(fd, DescriptorKind::kMailbox) == nullptr)
        return VBOARD_NEXT(send)(fd, data, size, flags);
    return SendMail(fd, data, size);
}

ssize_t recv(int fd, void* data, size_t size, int flags)
{
    Descriptor* mailbox = Find(fd, DescriptorKind::kMailbox);
    if (mailbox == nullptr)
        return VBOARD_NEXT(recv)(fd, data, size, flags);
    return ReceiveMail(fd, *mailbox, {data, size}, flags);
}

int close(int fd)
{
    Forget(fd);
    return VBOARD_NEXT(close)(fd);
}

}  // extern "C"
