#include "tools/orblinkctl/output/columns.h"

#include <gmock/gmock.h>

#include <sstream>

namespace ctl {
namespace {

TEST(Columns, AreNotBytes)
{
    EXPECT_EQ(ColumnsOf(""), 0U);
    EXPECT_EQ(ColumnsOf("lan1"), 4U);
    EXPECT_EQ(ColumnsOf("büro"), 4U);
    EXPECT_EQ(ColumnsOf("▁█"), 2U);
}

TEST(Columns, OfWideCharactersAreTwo)
{
    EXPECT_EQ(ColumnsOf("会議室"), 6U);
    EXPECT_EQ(ColumnsOf("한"), 2U);
    EXPECT_EQ(ColumnsOf("📡"), 2U);
}

// "e" and a combining acute accent are one character.
TEST(Columns, OfMarksAreNone)
{
    EXPECT_EQ(ColumnsOf("e\u0301"), 1U);
    ASSERT_EQ(Glyphs("e\u0301x").size(), 2U);
    EXPECT_EQ(Glyphs("e\u0301x")[0].text, "e\u0301");
}

TEST(Columns, ACutTextIsNeverWiderAndHoldsWholeCharacters)
{
    EXPECT_EQ(CutTo("会議室", 5), "会議");
    EXPECT_EQ(CutTo("会議室", 1), "");
    EXPECT_EQ(CutTo("büro", 2), "bü");
    EXPECT_EQ(CutTo("e\u0301x", 1), "e\u0301");
}

TEST(Columns, ALineIsBrokenBetweenWords)
{
    EXPECT_EQ(Wrapped("next: orblinkctl up 0", 40), "next: orblinkctl up 0");
    EXPECT_EQ(Wrapped("bad: switch 0 data path: it is not up", 20),
              "bad: switch 0 data\n    path: it is not\n    up");
    EXPECT_EQ(Wrapped("  next: orblinkctl down 0; up 0", 20),
              "  next: orblinkctl\n      down 0; up 0");
}

TEST(Columns, NoBrokenPartIsTooWide)
{
    for (size_t columns = 16; columns < 60; ++columns) {
        const std::string text = Wrapped(
            "  会議室 /dev/shm/a-name-without-any-blank-that-is-longer-than-it 📡 has e\u0301",
            columns);
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(ColumnsOf(line), columns) << text;
            EXPECT_FALSE(line.ends_with(" ")) << text;
        }
    }
}

// Bytes that are no UTF-8 are not read past their end.
TEST(Columns, OfBrokenTextAreBounded)
{
    EXPECT_EQ(ColumnsOf("a\xF0"), 2U);
    EXPECT_EQ(CutTo("a\xE4\xB8", 9), "a\xE4\xB8");
}

}  // namespace
}  // namespace ctl
