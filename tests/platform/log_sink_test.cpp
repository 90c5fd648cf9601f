#include <gtest/gtest.h>
#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "platform/ob_platform.h"

namespace {

std::vector<std::pair<int, std::string>> syslogLines;

struct Handled {
    uint32_t severity;
    uint32_t line;
    std::string func;
    std::string text;
    bool operator==(const Handled&) const = default;
};
std::vector<Handled> handled;

std::string Rendered(const char* format, va_list args)
{
    char text[256];
    vsnprintf(text, sizeof(text), format, args);
    return text;
}

void Handler(const OBPLAT_LogSite* site, const char* func, const char* format, va_list args)
{
    handled.push_back({site->Severity, site->Line, func, Rendered(format, args)});
}

void LogAt(uint32_t severity, int value)
{
    const OBPLAT_LogSite site = {severity, 3, OBPLAT_MODULE_SWITCH, 42};
    OBPLAT_Log(&site, "SomeStep", 0, "%s:%d value=%d", "SomeStep", 42, value);
}

class LogSink : public testing::Test {
protected:
    LogSink()
    {
        syslogLines.clear();
        handled.clear();
    }
    ~LogSink() override
    {
        OBPLAT_SetLogHandler(nullptr);
        OBPLAT_SetLogLevel(OBPLAT_SEVERITY_INFO);
    }
};

using SyslogLines = decltype(syslogLines);

TEST_F(LogSink, SendsEachSeverityToSyslogWithItsPriority)
{
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_TRACE);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    LogAt(OBPLAT_SEVERITY_NOTICE, 2);
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_EQ(syslogLines, (SyslogLines{{LOG_ERR, "SomeStep:42 value=1"},
                                        {LOG_NOTICE, "SomeStep:42 value=2"},
                                        {LOG_INFO, "SomeStep:42 value=3"},
                                        {LOG_DEBUG, "SomeStep:42 value=9"}}));
}

TEST_F(LogSink, DropsTraceLinesUnlessAskedFor)
{
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_TRUE(syslogLines.empty());
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    EXPECT_EQ(syslogLines.size(), 1U);
}

TEST_F(LogSink, LevelIsTheHighestSeverityStillLogged)
{
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_NOTICE);
    LogAt(OBPLAT_SEVERITY_NOTICE, 2);
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    OBPLAT_SetLogLevel(0);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    EXPECT_EQ(syslogLines, (SyslogLines{{LOG_NOTICE, "SomeStep:42 value=2"}}));
}

TEST_F(LogSink, HandlerTakesThePlaceOfSyslog)
{
    OBPLAT_SetLogHandler(Handler);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_EQ(handled, (std::vector<Handled>{{1, 42, "SomeStep", "SomeStep:42 value=1"}}));
    EXPECT_TRUE(syslogLines.empty());
}

TEST_F(LogSink, NullHandlerBringsSyslogBack)
{
    OBPLAT_SetLogHandler(Handler);
    OBPLAT_SetLogHandler(nullptr);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    EXPECT_TRUE(handled.empty());
    EXPECT_EQ(syslogLines, (SyslogLines{{LOG_ERR, "SomeStep:42 value=1"}}));
}

// A line below the level must not be formatted: the %s would crash.
TEST_F(LogSink, DroppedLinesAreNotFormatted)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_TRACE, 3, OBPLAT_MODULE_PHY, 7};
    OBPLAT_Log(&site, "SomeStep", 0, "%s", reinterpret_cast<const char*>(1));
    EXPECT_TRUE(syslogLines.empty());
}

}  // namespace

// Takes the C library's place for libobplatform.
extern "C" void vsyslog(int priority, const char* format, va_list args)
{
    syslogLines.emplace_back(priority, Rendered(format, args));
}
