#include "common/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace orblink {

int KeepDescriptor(int fd)
{
    if (fd > STDERR_FILENO) {
        fcntl(fd, F_SETFD, FD_CLOEXEC);  // refused: the descriptor works all the same
        return fd;
    }
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        return fd;
    close(fd);
    return moved;
}

}  // namespace orblink
