// The library's log lines on their way to standard error.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/access/unique_descriptor.h"

namespace ctl {

enum class LogMode {
    kSilent,    // nothing
    kFailures,  // the failures, and only when the command fails
    kProgress,  // failures, notices and progress as they come
    kTrace,     // everything as it comes
};

void TakeLogLines(LogMode mode);

// Whether the operator asked for lines as they come.
bool LogLinesAreShown();

// Lines that were held back since the last call of this function.
std::vector<std::string> HeldLogLines();
void DropHeldLogLines();
// Lines of a process that worked for this one.
void HoldLogLines(std::vector<std::string> lines);

// Whether a failure or notice of the running command holds this text.
bool LogSaid(std::string_view text);
// The first of them that does, or an empty text.
std::string LineWith(std::string_view text);

// From now on every line, trace lines too, is also kept as text.
void RecordAllLines();
std::string RecordedLines();

// Runs what the library prints to standard output into a text of its own while it lives.
class StdoutCapture {
public:
    StdoutCapture();
    ~StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    // Ends the capture.
    std::string Text();

private:
    void Restore();

    UniqueDescriptor saved_;
    UniqueDescriptor file_;
};

}  // namespace ctl
