// What a reader sees without any script.
#include <gmock/gmock.h>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(WebPage, IsCompleteWithoutAnyScript)
{
    WebOnBoard board("phy");
    board.BringUp();
    ASSERT_EQ(board.Run("orblinkctl aging 0 4800s").code, 0);
    board.Files().Write("syslog", "Nov 22 02:10:03 gw mgmtd: ORBLINK_InitOnce:88 begins\nother\n");
    board.Control("learn sw0:1 02:00:00:00:00:2a");
    board.Serve("--log " + board.Files().Path("syslog"));
    for (const char* text : {"<p class=\"state good\">Live</p>", "<th scope=\"row\">0:1</th>",
                             "<th scope=\"row\">0:7</th>", "<span class=\"mark good\">up</span>",
                             "<span class=\"mark off\">down</span>", "switch 0: enabled",
                             "02:00:00:00:00:2a", "auto-negotiation advertisement",
                             "ORBLINK_InitOnce:88 begins", "<input id=\"mac-search\" name=\"mac\""})
        EXPECT_TRUE(board.Shows("/", text)) << text;
    const std::string page = Get(board.Port(), "/").body;
    EXPECT_THAT(page, Not(HasSubstr("other\n")));
    // Nothing comes from elsewhere, and nothing that the policy would refuse.
    for (const char* text : {"://", "style=", "onclick", "onload", "<script>", "javascript:"})
        EXPECT_THAT(page, Not(HasSubstr(text)));
}

TEST(WebPage, SearchesAddressesWithoutAnyScript)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    ASSERT_EQ(board.Run("orblinkctl aging 0 4800s").code, 0);
    board.Control("learn sw0:1 02:00:00:00:00:2a");
    board.Control("learn sw0:2 02:00:00:00:00:3b 100");
    board.Serve();
    ASSERT_TRUE(board.Shows("/", "02:00:00:00:00:3b"));
    const std::string found = Get(board.Port(), "/?mac=00%3A2A").body;
    EXPECT_THAT(found, HasSubstr("02:00:00:00:00:2a"));
    EXPECT_THAT(found, Not(HasSubstr("02:00:00:00:00:3b")));
    EXPECT_THAT(found, HasSubstr("value=\"00:2A\""));
    EXPECT_THAT(Get(board.Port(), "/part/mac?mac=nobody").body, HasSubstr("no entry has nobody"));
}

TEST(WebPage, ShowsNamesAsTextAndNeverAsMarkup)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Files().Write("names.toml",
                        "[port]\n'<script>alert(1)</script>' = \"0:1\"\n"
                        "'\"><img src=x onerror=alert(2)>' = \"0:2\"\n");
    board.Serve("--names " + board.Files().Path("names.toml"));
    ASSERT_TRUE(board.Shows("/", "&lt;script&gt;alert(1)&lt;/script&gt;"));
    const std::string page =
        Get(board.Port(), "/?mac=%22%3E%3Cscript%3Ealert(3)%3C/script%3E").body;
    for (const char* text : {"<script>", "<img", "\">\"", "alert(3)</script>"})
        EXPECT_THAT(page, Not(HasSubstr(text)));
    EXPECT_THAT(page, HasSubstr("value=\"&quot;&gt;&lt;script&gt;alert(3)&lt;/script&gt;\""));
    Connection events(board.Port());
    events.Send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    const std::string text = events.ReadUntil("event: rates");
    EXPECT_THAT(text, HasSubstr("&lt;script&gt;alert(1)"));
    EXPECT_THAT(text, Not(HasSubstr("<script>")));
    EXPECT_THAT(text, Not(HasSubstr("<img")));
}

}  // namespace
}  // namespace webtest
