// What the TOML parser must not be given, and what looks like it.
#include "toml/text_check.h"

#include <gmock/gmock.h>

namespace toml_text {
namespace {

std::string Repeated(std::string_view text, size_t times)
{
    std::string all;
    for (size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string Said(std::string_view text)
{
    const auto complaint = Check(text);
    return !complaint ? ""
                      : std::to_string(complaint->line) + ":" + std::to_string(complaint->column) +
                            ": " + complaint->what;
}

TEST(TextCheck, LimitsTheSize)
{
    EXPECT_EQ(Said(std::string(65'536, ' ')), "");
    EXPECT_EQ(Said(std::string(65'537, ' ')), "1:1: expected a file of at most 64 KiB");
}

TEST(TextCheck, LimitsTheDotsOfAKey)
{
    constexpr const char* kDeep = ": expected at most 16 dots in a key";
    EXPECT_EQ(Said(Repeated("a.", 16) + "a = 1"), "");
    EXPECT_EQ(Said(Repeated("a.", 17) + "a = 1"), std::string("1:34") + kDeep);
    EXPECT_EQ(Said("b = 1\n[" + Repeated("a.", 17) + "a]"), std::string("2:35") + kDeep);
    EXPECT_EQ(Said("x = {" + Repeated("a.", 17) + "a = 1}"), std::string("1:39") + kDeep);
    // Blanks and quotes make a key no flatter.
    EXPECT_EQ(Said(Repeated("a . ", 17) + "a = 1"), std::string("1:67") + kDeep);
    EXPECT_EQ(Said(Repeated("\"!\".", 17) + "a = 1"), std::string("1:68") + kDeep);
    EXPECT_EQ(Said(Repeated("'\\'.", 17) + "a = 1"), std::string("1:68") + kDeep);
    EXPECT_EQ(Said(Repeated("\"\\\"\".", 17) + "a = 1"), std::string("1:85") + kDeep);
}

TEST(TextCheck, LeavesDotsOfTextsAlone)
{
    const std::string dots(40, '.');
    for (const std::string& text :
         {"# " + dots + "\na = 1", "a = \"" + dots + "\"", "a = '" + dots + "'",
          "a = \"\\\"" + dots + "\"", "a = \"\"\"\n\"" + dots + "\n\"\"\"",
          "a = '''\n'" + dots + "\n'''", "\"" + dots + "\" = 1",
          "a = [" + Repeated("1.5, ", 40) + "1]", Repeated("[a.b]\nc.d = 1.5\n", 40)})
        EXPECT_EQ(Said(text), "") << text;
}

TEST(TextCheck, WantsANameInAHeading)
{
    constexpr const char* kNoName = ": expected the name of a table";
    EXPECT_EQ(Said("[&]"), std::string("1:2") + kNoName);
    EXPECT_EQ(Said("\xEF\xBB\xBF[&]"), std::string("1:5") + kNoName);
    EXPECT_EQ(Said("a = 1\n \t[ [ {"), std::string("2:7") + kNoName);
    EXPECT_EQ(Said("[[\n"), std::string("1:3") + kNoName);
    EXPECT_EQ(Said("[\xC3\xA9]"), std::string("1:2") + kNoName);
    EXPECT_EQ(Said("a = [\n[1],\n]\n[&]"), std::string("4:2") + kNoName);
    EXPECT_EQ(Said("a = ['[', \"[\"] # [\n[&]"), std::string("2:2") + kNoName);
    // A long string may end with a quote of its own.
    EXPECT_EQ(Said("a = [\"\"\"b\"\"\"\", \"[\"]\n[&]"), std::string("2:2") + kNoName);
    for (const char* good : {"[a]", "[[a]]", "[ 1 ]", "[-]", "[_]", "['&']", "[[ \"&\" ]]", "[",
                             "[[", "[]", "a = [\n[{}, [+1]],\n[\n]]", "a = '''\n[&]'''"})
        EXPECT_EQ(Said(good), "") << good;
}

TEST(TextCheck, TakesLettersBeyondAsciiInTextsOnly)
{
    constexpr const char* kOutside = ": expected quotes around letters beyond ASCII";
    constexpr const char* kJoined = ": expected no letter beyond ASCII behind a backslash";
    EXPECT_EQ(Said("a = 1\n[b.\xD0\xA1]"), std::string("2:4") + kOutside);
    EXPECT_EQ(Said("a = \xC3\xA9"), std::string("1:5") + kOutside);
    EXPECT_EQ(Said("\xC3\xA9 = 1"), std::string("1:1") + kOutside);
    EXPECT_EQ(Said("a = \"\"\"b\\\n \n \xC3\xA9\"\"\""), std::string("3:2") + kJoined);
    EXPECT_EQ(Said("a = \"\"\"\\\xC3\xA9\"\"\""), std::string("1:9") + kJoined);
    for (const char* good :
         {"# \xC3\xA9", "a = \"\xC3\xA9\"", "a = '\\\xC3\xA9'", "'\xC3\xA9' = 1",
          "a = \"\"\"\n\xC3\xA9 \\\\\xC3\xA9 \\\n b\"\"\" # \xC3\xA9", "a = '''\\\n\xC3\xA9'''"})
        EXPECT_EQ(Said(good), "") << good;
}

TEST(TextCheck, WantsAnEndOfATextOfSeveralLines)
{
    constexpr const char* kNoEnd = ": expected three more quotes at its end";
    EXPECT_EQ(Said("a = 1\nb = \"\"\"\nc\n\"\""), std::string("2:5") + kNoEnd);
    EXPECT_EQ(Said("a = '''\n"), std::string("1:5") + kNoEnd);
    EXPECT_EQ(Said("a = \"\"\"\\\"\\\"\"\"b\"\\\xC3\xA9\""), std::string("1:5") + kNoEnd);
    EXPECT_EQ(Said("a = \"\"\"\"\"\""), "");
}

TEST(TextCheck, WantsNoEndOfATableInPlaceOfAValue)
{
    constexpr const char* kNoValue = ": expected no '}' behind '[' or ','";
    EXPECT_EQ(Said("a = [}"), std::string("1:6") + kNoValue);
    EXPECT_EQ(Said("a = [1, # b\n \r\n }"), std::string("3:2") + kNoValue);
    for (const char* good : {"a = {}", "a = [{}, { }]", "a = {b = [1]}", "a = {b = [1,\n]\n}",
                             "a = [{b = '['}]", "a = '['\n}", "#[\n}"})
        EXPECT_EQ(Said(good), "") << good;
}

TEST(TextCheck, WantsNoTimeBehindADate)
{
    constexpr const char* kTime = ": expected no time behind a date";
    EXPECT_EQ(Said("a = 1979-05-27 3"), std::string("1:15") + kTime);
    EXPECT_EQ(Said("a = 1979-05-27 07:32:00\n"), std::string("1:15") + kTime);
    EXPECT_EQ(Said("a = 19_79-05-27 3\n"), std::string("1:16") + kTime);
    EXPECT_EQ(Said("a=1-------k= 3\n"), std::string("1:13") + kTime);
    EXPECT_EQ(Said("a = [1--[--[-- 3]"), std::string("1:15") + kTime);
    EXPECT_EQ(Said("a = [2,\n1979-05-27 3]"), std::string("2:11") + kTime);
    for (const char* good : {"a = 1979-05-27", "a = 1979-05-27 # 3", "a = 1979-05-27T07:32:00",
                             "1-2-3= 4", "a-b-c= 4", "a = '1979-05-27 3'", "[1-2-3]\nb = 4",
                             "a = [1, 2]", "a = -1-2-3 4", "a = 1979-05-27\t3"})
        EXPECT_EQ(Said(good), "") << good;
}

TEST(TextCheck, WantsNoQuotesInANumber)
{
    constexpr const char* kQuotes = ": expected no quotes in a number";
    EXPECT_EQ(Said("a = 1--\"--\"-- 3"), std::string("1:8") + kQuotes);
    EXPECT_EQ(Said("a = [1'2']"), std::string("1:7") + kQuotes);
    EXPECT_EQ(Said("a = -\"\xC3\xA9\""), std::string("1:6") + kQuotes);
    EXPECT_EQ(Said("a = +1_R\"\xC3\xA9\""), std::string("1:9") + kQuotes);
    for (const char* good : {"a = [1, '2', \"3\"]", "a = 1 # '", "a = {b = 1, 'c' = 2}", "1'2'"})
        EXPECT_EQ(Said(good), "") << good;
}

TEST(TextCheck, StringsWithoutAnEndHideNothing)
{
    const std::string deep = Repeated("a.", 17) + "a = 1";
    for (const char* before : {"\"", "'", "\"\"\"", "'''", "a = \"\n", "a = 'b\n", "\"\\"})
        EXPECT_NE(Said(before + deep), "") << before;
}

}  // namespace
}  // namespace toml_text
