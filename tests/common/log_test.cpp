// Each form of a log line: record, arguments, value.
#include "common/log.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <type_traits>

using namespace orblink;

namespace {

struct Logged {
    const OBPLAT_LogSite* site;
    std::string func;
    std::string format;
    std::string text;
};

Logged last;

std::string Place(const char* func, int line)
{
    return std::string(func) + ":" + std::to_string(line);
}

void ExpectSite(uint32_t severity, uint32_t module, int line)
{
    EXPECT_EQ(last.site->Severity, severity);
    EXPECT_EQ(last.site->Class, 3U);
    EXPECT_EQ(last.site->Module, module);
    EXPECT_EQ(last.site->Line, static_cast<uint32_t>(line));
}

int LogForOthers(LogCaller caller)
{
    return OB_ERROR_AS(caller, "no vlan %d", 7);
}

int LogForOthersOfThePhySide(LogCaller caller)
{
    return EP_ERROR_AT_AS(caller, "%s.%d no phy %d", 1);
}

TEST(Log, GivesNameAndLineOfTheFunctionThatLogs)
{
    const int line = __LINE__ + 1;
    const int value = OB_ERROR("Invalid Vid=%d", 5);
    EXPECT_EQ(value, RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_SWITCH, line);
    EXPECT_EQ(last.func, __func__);
    EXPECT_EQ(last.format, "%s:%d Invalid Vid=%d");
    EXPECT_EQ(last.text, Place(__func__, line) + " Invalid Vid=5");
}

TEST(Log, GivesOneLineAlsoWhenTheStatementHasSeveral)
{
    const int first = __LINE__ + 2;
    // clang-format off
    OB_ERROR_TWICE("%s:%d ERROR: %s:%d: %s %d",
                   "no memory for",
                   3);
    // clang-format on
    // Compilers differ in which of the lines a macro stands.
    const int line = static_cast<int>(last.site->Line);
    EXPECT_TRUE(line == first || line == first + 2) << line;
    ExpectSite(1, OBPLAT_MODULE_SWITCH, line);
    const std::string place = Place(__func__, line);
    EXPECT_EQ(last.text, place + " ERROR: " + place + ": no memory for 3");
}

TEST(Log, OnBehalfOfACallerGivesTheCallersNameAndTheLineOfTheCall)
{
    const int line = __LINE__ + 1;
    EXPECT_EQ(LogForOthers(OB_CALLER), RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_SWITCH, line);
    EXPECT_EQ(last.func, __func__);
    EXPECT_EQ(last.text, Place(__func__, line) + " no vlan 7");
    EXPECT_EQ(LogForOthersOfThePhySide(EP_CALLER), RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_PHY, line + 4);
    EXPECT_EQ(last.text, std::string(__func__) + "." + std::to_string(line + 4) + " no phy 1");
}

TEST(Log, HasOneRecordForEachPlaceAndAlwaysTheSame)
{
    const OBPLAT_LogSite* first = nullptr;
    for (int round = 0; round < 2; ++round) {
        OB_TRACE("");
        EXPECT_TRUE(first == nullptr || first == last.site);
        first = last.site;
    }
    OB_TRACE("");
    EXPECT_NE(first, last.site);
}

TEST(Log, OfThePhySideAddsNothingToTheFormat)
{
    EXPECT_EQ(EP_ERROR("PHY is in disabled state"), RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_PHY, __LINE__ - 1);
    EXPECT_EQ(last.format, "PHY is in disabled state");
    EXPECT_EQ(EP_ERROR_AT("%s:%d NULL ptr"), RC_ERROR);
    EXPECT_EQ(last.text, Place(__func__, __LINE__ - 1) + " NULL ptr");
}

TEST(Log, SeveritiesAreThoseOfTheForms)
{
    OB_NOTICE("x");
    ExpectSite(2, OBPLAT_MODULE_SWITCH, __LINE__ - 1);
    OB_INFO("x");
    ExpectSite(3, OBPLAT_MODULE_SWITCH, __LINE__ - 1);
    OB_TRACE("x");
    ExpectSite(9, OBPLAT_MODULE_SWITCH, __LINE__ - 1);
    EP_INFO("x");
    ExpectSite(3, OBPLAT_MODULE_PHY, __LINE__ - 1);
    EP_TRACE("x");
    ExpectSite(9, OBPLAT_MODULE_PHY, __LINE__ - 1);
    EP_INFO_AT("%s:%d x");
    ExpectSite(3, OBPLAT_MODULE_PHY, __LINE__ - 1);
    EP_TRACE_AT("%s:%d x");
    ExpectSite(9, OBPLAT_MODULE_PHY, __LINE__ - 1);
    const StepCaller caller = OB_STEP_CALLER;
    const int line = __LINE__ - 1;
    OB_NOTICE_AS(caller, "x");
    ExpectSite(2, OBPLAT_MODULE_SWITCH, line);
    OB_INFO_AS(caller, "x");
    ExpectSite(3, OBPLAT_MODULE_SWITCH, line);
    EXPECT_EQ(OB_ERROR_AS(caller, "x"), RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_SWITCH, line);
    EXPECT_EQ(LogForOthers(caller), RC_ERROR);
    ExpectSite(1, OBPLAT_MODULE_SWITCH, line);
    EXPECT_EQ(last.func, __func__);
    const TraceCaller traced = OB_TRACE_CALLER;
    OB_TRACE_AS(traced, "x");
    ExpectSite(9, OBPLAT_MODULE_SWITCH, __LINE__ - 2);
}

TEST(Log, CarriesValuesOfEveryTypeThatOperationsLog)
{
    const uint8_t small = 200;
    const int16_t negative = -5;
    OB_ERROR("%d %d %u %x %s %zu %hhu %hu", small, negative, 4000000000U, 0xFFFFFFFFU, "word",
             sizeof(uint32_t), small, uint16_t{65535});
    EXPECT_EQ(last.text, Place(__func__, static_cast<int>(last.site->Line)) +
                             " 200 -5 4000000000 ffffffff word 4 200 65535");
    const int place = __LINE__ + 1;
    OB_NOTICE("%d %d %d %d %d %d %d", -1, 2, -3, 4, -5, 6, -7);
    EXPECT_EQ(last.text, Place(__func__, place) + " -1 2 -3 4 -5 6 -7");
}

TEST(Log, OnlyAnErrorHasAValue)
{
    static_assert(std::is_same_v<decltype(OB_ERROR("x")), int>);
    static_assert(std::is_same_v<decltype(EP_ERROR("x")), int>);
    static_assert(std::is_void_v<decltype(OB_NOTICE("x"))>);
    static_assert(std::is_void_v<decltype(OB_INFO("x"))>);
    static_assert(std::is_void_v<decltype(OB_TRACE("x"))>);
    static_assert(std::is_void_v<decltype(EP_INFO("x"))>);
    static_assert(std::is_void_v<decltype(EP_TRACE("x"))>);
}

}  // namespace

extern "C" void OBPLAT_Log(const OBPLAT_LogSite* Site, const char* Func, int Zero,
                           const char* Format, ...)
{
    char text[256];
    va_list args;
    va_start(args, Format);
    vsnprintf(text, sizeof(text), Format, args);
    va_end(args);
    EXPECT_EQ(Zero, 0);
    last = {Site, Func, Format, text};
}
