#include "tools/orblink_web/view/html.h"

#include <gtest/gtest.h>

#include "tools/orblink_web/server/routes.h"
#include "tools/orblink_web/view/board_view.h"
#include "tools/orblinkctl/access/json.h"

namespace web {
namespace {

TEST(Html, EscapesWhatCouldBeMarkup)
{
    EXPECT_EQ(Escaped("<a href=\"x\">'&'</a>"),
              "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;&lt;/a&gt;");
    EXPECT_EQ(Escaped("\x1b[2J\x80"), "\\x1b[2J\\x80");
}

TEST(Html, ShowsValuesAsTheReaderKnowsThem)
{
    EXPECT_EQ(Shown(nullptr), "–");
    EXPECT_EQ(Shown(true), "yes");
    EXPECT_EQ(Shown(ctl::Model::array({1, "<2>"})), "1, &lt;2&gt;");
    EXPECT_TRUE(At(ctl::Model::array(), "key").is_null());
    EXPECT_TRUE(At(ctl::Model::object(), "key").is_null());
}

TEST(Html, GivesRatesInBits)
{
    EXPECT_EQ(BitRate(nullptr), "–");
    EXPECT_EQ(BitRate(0), "0 b/s");
    EXPECT_EQ(BitRate(124), "992 b/s");
    EXPECT_EQ(BitRate(125), "1.0 kb/s");
    EXPECT_EQ(BitRate(125000000), "1.0 Gb/s");
    EXPECT_EQ(BitRate(uint64_t{125000000000}), "1000 Gb/s");
}

TEST(Html, EventsHaveNoLineThatEndsThem)
{
    EXPECT_EQ(EventText("log", "a\r\n\nb"), "event: log\ndata: a\ndata: \ndata: b\n\n");
}

TEST(Html, TargetsAreUnescapedOnce)
{
    EXPECT_EQ(Unescaped("a%3Ab+c%253a%", true), "a:b c%3a%");
    EXPECT_EQ(Unescaped("a+b%4", false), "a+b%4");
    EXPECT_EQ(PathOf("/x?y?z"), "/x");
}

}  // namespace
}  // namespace web
