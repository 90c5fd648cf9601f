// A log daemon of the test's own: the socket /dev/log, in a /dev that only the test sees.
#pragma once

#include <string>
#include <vector>

namespace obtest {

// Covers /dev for the rest of the process; false, with a line, where that is not allowed.
bool EnterPrivateDev();

class LogDaemon {
public:
    LogDaemon() { Start(); }
    ~LogDaemon() { Stop(); }
    LogDaemon(const LogDaemon&) = delete;
    LogDaemon& operator=(const LogDaemon&) = delete;

    void Start();
    void Stop();

    // What has come in and was not read yet.
    std::vector<std::string> Drain() const;

private:
    int fd_ = -1;
};

}  // namespace obtest
