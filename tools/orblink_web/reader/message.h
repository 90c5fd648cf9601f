// What the reader tells the server: one line of JSON for each answer or piece of the log.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace web {

// What orblinkctl said to a line of words.
struct Answer {
    // The words with slashes between them; of the overview an empty text.
    std::string path;
    // Exit code.
    int code = 0;
    // What went to standard output or, of a failure, to standard error.
    std::string text;
    // Milliseconds of the machine's monotonic clock when the reading began.
    int64_t when = 0;
};

struct Message {
    std::optional<Answer> answer;
    // Lines of the system log.
    std::vector<std::string> log;
};

int64_t MonotonicMilliseconds();

// With the line's end.
std::string Encoded(const Message& message);
// Without it; nothing when the line is no message.
std::optional<Message> Decoded(std::string_view line);

}  // namespace web
