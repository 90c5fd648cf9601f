#include "tests/platform/log_daemon.h"

#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace obtest {

bool EnterPrivateDev()
{
    if (mount("tmpfs", "/dev", "tmpfs", 0, nullptr) == 0)
        return true;
    perror("/dev");
    return false;
}

void LogDaemon::Start()
{
    const sockaddr_un address = {AF_UNIX, "/dev/log"};
    fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        throw std::runtime_error("bind /dev/log");
}

void LogDaemon::Stop()
{
    close(fd_);
    unlink("/dev/log");
}

std::vector<std::string> LogDaemon::Drain() const
{
    std::vector<std::string> lines;
    char line[8192];
    for (;;) {
        const ssize_t size = recv(fd_, line, sizeof(line), 0);
        if (size < 0)
            return lines;
        lines.emplace_back(line, static_cast<size_t>(size));
    }
}

}  // namespace obtest
