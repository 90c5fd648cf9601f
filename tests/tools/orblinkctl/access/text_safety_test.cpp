#include "tools/orblinkctl/access/text_safety.h"

#include <gtest/gtest.h>

namespace ctl {
namespace {

TEST(Printable, LeavesTextsAlone)
{
    EXPECT_EQ(Printable("libvswitch.so 0:1 ~"), "libvswitch.so 0:1 ~");
    EXPECT_EQ(Printable("Zürich 東京 \U0001F600"), "Zürich 東京 \U0001F600");
    EXPECT_EQ(Printable(""), "");
}

TEST(Printable, EscapesControlCharactersOfBothTables)
{
    EXPECT_EQ(Printable("a\033[31mb\a\r\n\t\x7f"), "a\\x1b[31mb\\x07\\x0d\\x0a\\x09\\x7f");
    EXPECT_EQ(Printable(std::string_view("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(Printable("a\u009b31m"), "a\\xc2\\x9b31m");
    EXPECT_EQ(Printable("a\u202eb\u2066"), "a\\xe2\\x80\\xaeb\\xe2\\x81\\xa6");
}

TEST(Printable, EscapesWhatIsNotUtf8)
{
    EXPECT_EQ(Printable("\xff\xc0\x80"), "\\xff\\xc0\\x80");
    EXPECT_EQ(Printable("a\xe2\x82"), "a\\xe2\\x82");
    EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(Printable("\xc3("), "\\xc3(");
}

}  // namespace
}  // namespace ctl
