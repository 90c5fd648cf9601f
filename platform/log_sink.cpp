#include <syslog.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/log_socket.h"
#include "platform/ob_platform.h"

namespace {

// A longer line is cut.
constexpr size_t kLineSize = 2048;

constinit std::atomic<uint32_t> logLevel{OBPLAT_SEVERITY_INFO};
constinit std::atomic<OBPLAT_LogHandler> logHandler{nullptr};

// Lines that the log daemon could not take, since the last one that it took.
constinit std::atomic<uint32_t> lostLines{0};

// Facility and level as the daemon reads them, <8 * facility + level>.
const char* PriorityMark(uint32_t severity)
{
    static_assert(LOG_USER == 8 && LOG_ERR == 3 && LOG_NOTICE == 5 && LOG_INFO == 6);
    switch (severity) {
        case OBPLAT_SEVERITY_ERROR:
            return "<11>";
        case OBPLAT_SEVERITY_NOTICE:
            return "<13>";
        case OBPLAT_SEVERITY_INFO:
            return "<14>";
        default:
            return "<15>";
    }
}

class Line {
public:
    void Append(const char* text)
    {
        const size_t length = strnlen(text, kLineSize - size_);
        memcpy(text_ + size_, text, length);
        size_ += length;
    }

    __attribute__((format(printf, 2, 0))) void Append(const char* format, va_list args)
    {
        const size_t room = kLineSize - size_;
        // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): every caller has started it
        const int length = vsnprintf(text_ + size_, room, format, args);
        if (length > 0 && room > 0)
            size_ += static_cast<size_t>(length) < room ? static_cast<size_t>(length) : room - 1;
    }

    __attribute__((format(printf, 2, 3))) void AppendFormatted(const char* format, ...)
    {
        va_list args;  // NOLINT(cppcoreguidelines-init-variables): va_start() sets it
        va_start(args, format);
        Append(format, args);
        va_end(args);
    }

    const char* Text() const { return text_; }
    size_t Size() const { return size_; }

private:
    char text_[kLineSize];
    size_t size_ = 0;
};

// "<13>program: text", as the C library sends it but for the time: the daemon knows that, and to
// ask for the zone could take the heap and a lock.
__attribute__((format(printf, 2, 0))) void SendToDaemon(uint32_t severity, const char* format,
                                                        va_list args)
{
    const int error = errno;
    const uint32_t lost = lostLines.exchange(0, std::memory_order_relaxed);
    Line line;
    line.Append(PriorityMark(severity));
    line.Append(program_invocation_short_name);
    line.Append(": ");
    if (lost != 0)
        line.AppendFormatted("[%u lines lost] ", lost);
    errno = error;  // for %m
    line.Append(format, args);
    if (!obplatform::SendLogDatagram(line.Text(), line.Size()))
        lostLines.fetch_add(lost + 1, std::memory_order_relaxed);
    errno = error;
}

}  // namespace

#pragma GCC visibility push(default)

// Nearly all lines end with the comparison. What a stack protector would guard here is the list of
// arguments, which nothing is written to.
__attribute__((no_stack_protector)) void OBPLAT_Log(const OBPLAT_LogSite* Site, const char* Func,
                                                    int, const char* Format, ...)
{
    if (Site->Severity > logLevel.load(std::memory_order_relaxed))
        return;
    va_list args;  // NOLINT(cppcoreguidelines-init-variables): va_start() sets it
    va_start(args, Format);
    const OBPLAT_LogHandler handler = logHandler.load(std::memory_order_acquire);
    if (handler != nullptr)
        handler(Site, Func, Format, args);
    else
        SendToDaemon(Site->Severity, Format, args);
    va_end(args);
}

void OBPLAT_SetLogHandler(OBPLAT_LogHandler Handler)
{
    logHandler.store(Handler, std::memory_order_release);
}

void OBPLAT_SetLogLevel(uint32_t Level)
{
    logLevel.store(Level, std::memory_order_relaxed);
}

#pragma GCC visibility pop
