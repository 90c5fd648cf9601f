#include "common/descriptor.h"

#include <fcntl.h>

namespace orblink {
namespace {

constexpr int kFirstBeyondStandardStreams = 3;

}  // namespace

int KeepDescriptor(int fd)
{
    if (fd < 0)
        return fd;
    if (fd >= kFirstBeyondStandardStreams) {
        fcntl(fd, F_SETFD, FD_CLOEXEC);  // result dropped: without it the descriptor still serves
        return fd;
    }
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, kFirstBeyondStandardStreams);
    if (moved < 0)
        return fd;
    close(fd);  // result dropped: the copy is what is used from here on
    return moved;
}

}  // namespace orblink
