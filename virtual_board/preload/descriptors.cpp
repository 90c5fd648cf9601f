#include "virtual_board/preload/descriptors.h"

#include <cerrno>

#include "virtual_board/preload/board_link.h"

namespace vboard::preload {
namespace {

constexpr int kMaxDescriptors = 4096;
Descriptor descriptors[kMaxDescriptors];

}  // namespace

int Remember(int fd, DescriptorKind kind)
{
    if (fd < 0)
        return -1;
    if (fd >= kMaxDescriptors) {
        Disconnect(fd);
        errno = EMFILE;
        return -1;
    }
    descriptors[fd] = {kind, false, SocketCookie(fd)};
    return fd;
}

Descriptor* Find(int fd, DescriptorKind kind)
{
    if (fd < 0 || fd >= kMaxDescriptors || descriptors[fd].kind != kind)
        return nullptr;
    return SocketCookie(fd) == descriptors[fd].cookie ? &descriptors[fd] : nullptr;
}

void Forget(int fd)
{
    if (fd >= 0 && fd < kMaxDescriptors)
        descriptors[fd] = {};
}

}  // namespace vboard::preload
