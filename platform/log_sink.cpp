#include <syslog.h>

#include "platform/ob_platform.h"

namespace {

constinit uint32_t logLevel = OBPLAT_SEVERITY_INFO;
constinit OBPLAT_LogHandler logHandler = nullptr;

int SyslogPriority(uint32_t severity)
{
    switch (severity) {
        case OBPLAT_SEVERITY_ERROR:
            return LOG_ERR;
        case OBPLAT_SEVERITY_NOTICE:
            return LOG_NOTICE;
        case OBPLAT_SEVERITY_INFO:
            return LOG_INFO;
        default:
            return LOG_DEBUG;
    }
}

}  // namespace

#pragma GCC visibility push(default)

void OBPLAT_Log(const OBPLAT_LogSite* Site, const char* Func, int, const char* Format, ...)
{
    if (Site->Severity > logLevel)
        return;
    va_list args;
    va_start(args, Format);
    if (logHandler != nullptr)
        logHandler(Site, Func, Format, args);
    else
        vsyslog(SyslogPriority(Site->Severity), Format, args);
    va_end(args);
}

void OBPLAT_SetLogHandler(OBPLAT_LogHandler Handler)
{
    logHandler = Handler;
}

void OBPLAT_SetLogLevel(uint32_t Level)
{
    logLevel = Level;
}

#pragma GCC visibility pop
