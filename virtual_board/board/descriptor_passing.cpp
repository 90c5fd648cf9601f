#include "virtual_board/board/descriptor_passing.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vboard {
namespace {

union Ancillary {
    cmsghdr header;
    char space[CMSG_SPACE(sizeof(int))];
};

}  // namespace

bool SendWithDescriptor(int socket, const void* data, size_t size, int descriptor)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): what is sent is only read
    iovec part{const_cast<void*>(data), size};
    Ancillary ancillary{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = &ancillary;
        message.msg_controllen = sizeof ancillary;
        ancillary.header.cmsg_level = SOL_SOCKET;
        ancillary.header.cmsg_type = SCM_RIGHTS;
        ancillary.header.cmsg_len = CMSG_LEN(sizeof descriptor);
        memcpy(CMSG_DATA(&ancillary.header), &descriptor, sizeof descriptor);
    }
    // Not through the C library: of i386 that would be a call of the kind that the filter names, and
    // the entrant sends its listener this way.
    ssize_t sent = 0;
    do
        sent = syscall(SYS_sendmsg, socket, &message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(size);
}

Received ReceiveWithDescriptor(int socket, void* into, size_t size)
{
    iovec part{into, size};
    Ancillary ancillary{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = &ancillary;
    message.msg_controllen = sizeof ancillary;
    Received received;
    do
        received.size = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    while (received.size < 0 && errno == EINTR);
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (received.size >= 0 && header != nullptr && header->cmsg_type == SCM_RIGHTS) {
        int descriptor = -1;
        memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
        received.descriptor = UniqueFd{descriptor};
    }
    return received;
}

}  // namespace vboard
