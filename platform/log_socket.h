// The datagram socket of the log sink, one for the process.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>

namespace obplatform {

// Where the log daemon listens. In a file of its own: tests have a daemon elsewhere.
sockaddr_un LogDaemonAddress();

// Sends one datagram to the log daemon if it can take it at once. False when it was not sent.
bool SendLogDatagram(const char* data, size_t size);

}  // namespace obplatform
