#include "tools/orblinkctl/access/log_lines.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/ob_platform.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/text_safety.h"

namespace ctl {

namespace {

LogMode currentMode = LogMode::kFailures;

bool recordAll = false;

std::string& Record()
{
    static std::string text;
    return text;
}

bool ShownAtOnce(uint32_t severity)
{
    if (currentMode == LogMode::kProgress)
        return severity <= OBPLAT_SEVERITY_INFO;
    return currentMode == LogMode::kTrace;
}

// Failures and notices, in every mode.
std::vector<std::string>& Lines()
{
    static std::vector<std::string> lines;
    return lines;
}

const char* LevelWord(uint32_t severity)
{
    switch (severity) {
        case OBPLAT_SEVERITY_ERROR:
            return "error";
        case OBPLAT_SEVERITY_NOTICE:
            return "notice";
        case OBPLAT_SEVERITY_INFO:
            return "info";
        default:
            return "trace";
    }
}

// Most formats of the switch side begin with the function; those of the PHY side as a rule do not.
bool NamesFunction(const char* format)
{
    return std::strncmp(format, "%s:%d", 5) == 0 || std::strncmp(format, "%s.%d", 5) == 0;
}

void Take(const OBPLAT_LogSite* site, const char* function, const char* format, va_list arguments)
{
    char text[2048];
    std::vsnprintf(text, sizeof text, format, arguments);
    std::string line = std::string("liborblink: ") + LevelWord(site->Severity) + ": ";
    if (!NamesFunction(format))
        line += std::string(function) + ": ";
    line += text;
    line.erase(line.find_last_not_of(" \n") + 1);
    line = PrintableLines(line);
    if (recordAll)
        Record() += line + "\n";
    if (ShownAtOnce(site->Severity))
        std::fprintf(stderr, "%s\n", line.c_str());
    if (site->Severity <= OBPLAT_SEVERITY_NOTICE)
        Lines().push_back(std::move(line));
}

}  // namespace

void TakeLogLines(LogMode mode)
{
    currentMode = mode;
    OBPLAT_SetLogHandler(Take);
    // Some refusals are notices.
    OBPLAT_SetLogLevel(mode == LogMode::kTrace      ? OBPLAT_SEVERITY_TRACE
                       : mode == LogMode::kProgress ? OBPLAT_SEVERITY_INFO
                                                    : OBPLAT_SEVERITY_NOTICE);
}

void RecordAllLines()
{
    recordAll = true;
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_TRACE);
}

std::string RecordedLines()
{
    return Record();
}

bool LogLinesAreShown()
{
    return currentMode == LogMode::kProgress || currentMode == LogMode::kTrace;
}

std::vector<std::string> HeldLogLines()
{
    auto lines = std::exchange(Lines(), {});
    return currentMode == LogMode::kFailures ? lines : std::vector<std::string>();
}

void DropHeldLogLines()
{
    Lines().clear();
}

void HoldLogLines(std::vector<std::string> lines)
{
    Lines() = std::move(lines);
}

std::string LineWith(std::string_view text)
{
    for (const auto& line : Lines())
        if (line.find(text) != std::string::npos)
            return line;
    return {};
}

bool LogSaid(std::string_view text)
{
    return std::any_of(Lines().begin(), Lines().end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
    });
}

StdoutCapture::StdoutCapture()
{
    std::fflush(stdout);
    file_ = UniqueDescriptor(memfd_create("orblinkctl", MFD_CLOEXEC));
    saved_ = UniqueDescriptor(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    if (file_ && saved_)
        dup2(file_.Get(), STDOUT_FILENO);  // result dropped: what is not caught is seen
}

StdoutCapture::~StdoutCapture()
{
    Restore();
}

void StdoutCapture::Restore()
{
    if (!saved_)
        return;
    std::fflush(stdout);
    dup2(saved_.Get(), STDOUT_FILENO);  // result dropped: nothing could be told any more
    saved_ = UniqueDescriptor();
}

std::string StdoutCapture::Text()
{
    Restore();
    std::string text;
    char piece[4096];
    lseek(file_.Get(), 0, SEEK_SET);
    for (ssize_t count = 0; (count = read(file_.Get(), piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(count));
    return text;
}

}  // namespace ctl
