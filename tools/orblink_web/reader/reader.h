// The one place that calls the library: a process of its own, so that whatever becomes of the
// board, of a HAL library or of a call that does not return, the server lives on.
#pragma once

#include <cstdint>
#include <string>

namespace web {

struct ReaderOptions {
    std::string namesFile;
    std::string logFile;
    int64_t registerPeriod = 0;
};

// Where the process that the server starts finds its end of the pipe.
inline constexpr int kReaderPipe = 3;

// Reads until nobody listens any more, or until the board is another one: then the next reader
// begins with nothing in its memory. The result is the exit code.
int RunReader(const ReaderOptions& options);

}  // namespace web
