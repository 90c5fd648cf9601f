// The datagram socket of the log sink, one for the process.
#pragma once

#include <cstddef>

namespace obplatform {

// Sends one datagram to the log daemon if it can take it at once. False when it was not sent.
bool SendLogDatagram(const char* data, size_t size);

}  // namespace obplatform
