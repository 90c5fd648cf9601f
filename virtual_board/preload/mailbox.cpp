// Sockets of address family 43: each is a connection to the board process.

#include <sys/socket.h>

#include <cerrno>
#include <cstring>

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

// A message that came for a receive that was cut short, while the program was sending.
struct Kept {
    unsigned long long cookie;
    size_t size;
    unsigned char bytes[wire::kMaxData];
};
Kept kept[4];

Kept* FindKept(unsigned long long cookie)
{
    for (Kept& one : kept)
        if (one.size > 0 && one.cookie == cookie)
            return &one;
    return nullptr;
}

// The place of one whose socket is long gone may be taken.
Kept& PlaceFor(const Descriptor& mailbox)
{
    for (Kept& one : kept)
        if (one.size == 0 || one.cookie == mailbox.cookie)
            return one;
    return kept[0];
}

ssize_t TakeKept(Kept& one, Buffer into, int flags)
{
    const size_t size = one.size;
    const size_t taken = size < into.size ? size : into.size;
    memcpy(into.data, one.bytes, taken);
    one.size = 0;
    return static_cast<ssize_t>((flags & MSG_TRUNC) != 0 ? size : taken);
}

ssize_t ReceiveMail(int fd, Descriptor& mailbox, Buffer into, int flags)
{
    if (Kept* one = FindKept(mailbox.cookie))
        return TakeKept(*one, into, flags);
    wire::Request request{wire::kMagic, wire::Op::kReceive, static_cast<uint32_t>(flags), 0};
    if (!mailbox.answerDue && !Post(fd, request, nullptr))
        return -1;
    const int waits = mailbox.answerDue ? flags & MSG_DONTWAIT : 0;
    mailbox.answerDue = true;
    wire::Reply reply{};
    long length = Await(fd, into, &reply, waits);
    // By a signal, or by the socket's own time-out: the next receive gets what comes.
    if (length < 0 && reply.error == 0)
        return -1;
    mailbox.answerDue = false;
    bool cut = length > 0 && static_cast<size_t>(length) > into.size;
    return cut && (flags & MSG_TRUNC) == 0 ? static_cast<ssize_t>(into.size) : length;
}

ssize_t SendMail(int fd, Descriptor& mailbox, const void* data, size_t size)
{
    if (size > wire::kMaxData) {
        errno = EMSGSIZE;
        return -1;
    }
    const Buffer message{const_cast<void*>(data), size};
    if (!mailbox.answerDue)
        return Ask(fd, wire::Op::kSend, 0, message);
    wire::Request request{wire::kMagic, wire::Op::kSend, 0, static_cast<uint32_t>(size)};
    if (!Post(fd, request, data))
        return -1;
    // The board gives up the receive when it hears something else, but may have answered it before.
    mailbox.answerDue = false;
    Kept& place = PlaceFor(mailbox);
    wire::Reply reply{};
    const long result = AwaitUninterrupted(fd, {place.bytes, sizeof place.bytes}, &reply);
    if (reply.dataSize == 0)
        return result;
    place.cookie = mailbox.cookie;
    place.size = reply.dataSize;
    return AwaitUninterrupted(fd);
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
    Descriptor* mailbox = Find(fd, DescriptorKind::kMailbox);
    if (mailbox == nullptr)
        return VBOARD_NEXT(send)(fd, data, size, flags);
    return SendMail(fd, *mailbox, data, size);
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
