// A log daemon of the test's own, at a place of its own.
#pragma once

#include <string>
#include <vector>

#include "platform/log_socket.h"

namespace obtest {

class LogDaemon {
public:
    explicit LogDaemon(const sockaddr_un& address = obplatform::LogDaemonAddress())
        : address_(address)
    {
        Start();
    }
    ~LogDaemon() { Stop(); }
    LogDaemon(const LogDaemon&) = delete;
    LogDaemon& operator=(const LogDaemon&) = delete;

    void Start();
    void Stop();

    // What has come in and was not read yet.
    std::vector<std::string> Drain() const;

private:
    sockaddr_un address_;
    int fd_ = -1;
};

}  // namespace obtest
