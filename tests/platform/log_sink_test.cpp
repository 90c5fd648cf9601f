#include <gtest/gtest.h>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/ob_platform.h"
#include "tests/platform/log_daemon.h"

namespace {

using obtest::LogDaemon;
using Lines = std::vector<std::string>;

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
    LogSink() { handled.clear(); }
    ~LogSink() override
    {
        OBPLAT_SetLogHandler(nullptr);
        OBPLAT_SetLogLevel(OBPLAT_SEVERITY_INFO);
    }

    LogDaemon daemon;
};

TEST_F(LogSink, SendsEachSeverityToTheLogDaemonWithItsPriority)
{
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_TRACE);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    LogAt(OBPLAT_SEVERITY_NOTICE, 2);
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_EQ(daemon.Drain(), (Lines{"<11>platform_test: SomeStep:42 value=1",
                                     "<13>platform_test: SomeStep:42 value=2",
                                     "<14>platform_test: SomeStep:42 value=3",
                                     "<15>platform_test: SomeStep:42 value=9"}));
}

TEST_F(LogSink, DropsTraceLinesUnlessAskedFor)
{
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_EQ(daemon.Drain(), Lines());
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    EXPECT_EQ(daemon.Drain().size(), 1U);
}

TEST_F(LogSink, LevelIsTheHighestSeverityStillLogged)
{
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_NOTICE);
    LogAt(OBPLAT_SEVERITY_NOTICE, 2);
    LogAt(OBPLAT_SEVERITY_INFO, 3);
    OBPLAT_SetLogLevel(0);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    EXPECT_EQ(daemon.Drain(), Lines{"<13>platform_test: SomeStep:42 value=2"});
}

TEST_F(LogSink, HandlerTakesThePlaceOfTheDaemon)
{
    OBPLAT_SetLogHandler(Handler);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    LogAt(OBPLAT_SEVERITY_TRACE, 9);
    EXPECT_EQ(handled, (std::vector<Handled>{{1, 42, "SomeStep", "SomeStep:42 value=1"}}));
    EXPECT_EQ(daemon.Drain(), Lines());
}

TEST_F(LogSink, NullHandlerBringsTheDaemonBack)
{
    OBPLAT_SetLogHandler(Handler);
    OBPLAT_SetLogHandler(nullptr);
    LogAt(OBPLAT_SEVERITY_ERROR, 1);
    EXPECT_TRUE(handled.empty());
    EXPECT_EQ(daemon.Drain(), Lines{"<11>platform_test: SomeStep:42 value=1"});
}

// A line below the level must not be formatted: the %s would crash.
TEST_F(LogSink, DroppedLinesAreNotFormatted)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_TRACE, 3, OBPLAT_MODULE_PHY, 7};
    OBPLAT_Log(&site, "SomeStep", 0, "%s", reinterpret_cast<const char*>(1));
    EXPECT_EQ(daemon.Drain(), Lines());
}

TEST_F(LogSink, LeavesErrnoAloneAndShowsTheCallers)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_ERROR, 3, OBPLAT_MODULE_PHY, 7};
    errno = ENOTTY;
    OBPLAT_Log(&site, "SomeStep", 0, "%m");
    EXPECT_EQ(errno, ENOTTY);
    EXPECT_EQ(daemon.Drain(), Lines{"<11>platform_test: Inappropriate ioctl for device"});
    daemon.Stop();
    errno = ENOTTY;
    OBPLAT_Log(&site, "SomeStep", 0, "%m");
    EXPECT_EQ(errno, ENOTTY);
    daemon.Start();
}

TEST_F(LogSink, CutsALineThatIsTooLong)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_ERROR, 3, OBPLAT_MODULE_PHY, 7};
    const std::string text(5000, 'x');
    OBPLAT_Log(&site, "SomeStep", 0, "%s", text.c_str());
    const std::string mark = "<11>platform_test: ";
    EXPECT_EQ(daemon.Drain(), Lines{mark + std::string(2047 - mark.size(), 'x')});
}

}  // namespace
