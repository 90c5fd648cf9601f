#include "tests/platform/log_daemon.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace obplatform {

sockaddr_un LogDaemonAddress()
{
    static const pid_t test = getpid();  // of the program, also in a child
    sockaddr_un address = {AF_UNIX, ""};
    snprintf(address.sun_path, sizeof(address.sun_path), "/tmp/orblink-log-%d", test);
    return address;
}

}  // namespace obplatform

namespace obtest {

void LogDaemon::Start()
{
    fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (bind(fd_, reinterpret_cast<const sockaddr*>(&address_), sizeof(address_)) != 0)
        throw std::runtime_error(address_.sun_path);
}

void LogDaemon::Stop()
{
    close(fd_);
    unlink(address_.sun_path);
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
