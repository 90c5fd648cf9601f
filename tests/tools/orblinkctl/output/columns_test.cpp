#include "tools/orblinkctl/output/columns.h"

#include <gmock/gmock.h>

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

// Bytes that are no UTF-8 are not read past their end.
TEST(Columns, OfBrokenTextAreBounded)
{
    EXPECT_EQ(ColumnsOf("a\xF0"), 2U);
    EXPECT_EQ(CutTo("a\xE4\xB8", 9), "a\xE4\xB8");
}

}  // namespace
}  // namespace ctl
