// Who may ask, and for what.
#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

using testing::HasSubstr;

class WebRequest : public testing::Test {
protected:
    void SetUp() override { board_.Serve("--host gateway.lan"); }

    std::string Raw(const std::string& bytes) const
    {
        Connection connection(board_.Port());
        connection.Send(bytes);
        return connection.ReadAll();
    }

    WebOnBoard board_{"no_devices"};
};

TEST_F(WebRequest, ReadsAndNothingElse)
{
    for (const std::string method :
         {"POST", "PUT", "DELETE", "PATCH", "OPTIONS", "TRACE", "CONNECT", "PROPFIND"}) {
        const Response response = Ask(board_.Port(), method, "/", "localhost");
        EXPECT_EQ(response.status, 405) << method;
        EXPECT_EQ(response.headers.at("allow"), "GET, HEAD") << method;
    }
    EXPECT_EQ(Ask(board_.Port(), "POST", "/api/port", "localhost", "Content-Length: 0\r\n").status,
              405);
}

TEST_F(WebRequest, OfTheHeaderAloneGetsNoBody)
{
    for (const std::string target : {"/", "/page.css", "/metrics", "/api/nothing", "/events"}) {
        const Response head = Ask(board_.Port(), "HEAD", target, "localhost");
        EXPECT_EQ(head.body, "") << target;
        EXPECT_NE(head.status, 0) << target;
    }
    const Response full = Get(board_.Port(), "/page.js");
    const Response head = Ask(board_.Port(), "HEAD", "/page.js", "localhost");
    EXPECT_EQ(head.headers.at("content-length"), std::to_string(full.body.size()));
}

// A page of somebody else's may have a name that points here.
TEST_F(WebRequest, IsRefusedUnderAForeignName)
{
    for (const std::string host :
         {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example", "gateway.lan.evil",
          "evil.example:8080", "127.0.0.1:x", "[::1", "[evil]:80", "@localhost"}) {
        for (const std::string target : {"/", "/api/port", "/events", "/metrics"})
            EXPECT_EQ(Ask(board_.Port(), "GET", target, host).status, 421) << host << target;
    }
    for (const std::string host : {"localhost", "LOCALHOST:9999", "127.0.0.1", "127.0.0.1:8080",
                                   "[::1]:8080", "10.1.2.3", "gateway.lan", "Gateway.LAN:80"})
        EXPECT_EQ(Ask(board_.Port(), "GET", "/", host).status, 200) << host;
}

TEST_F(WebRequest, NeedsOneHostAndAPath)
{
    EXPECT_THAT(Raw("GET / HTTP/1.1\r\n\r\n"), HasSubstr("HTTP/1.1 400 "));
    EXPECT_THAT(Raw("GET / HTTP/1.1\r\nHost: localhost\r\nHost: evil\r\n\r\n"),
                HasSubstr("HTTP/1.1 400 "));
    EXPECT_THAT(Raw("GET http://evil/ HTTP/1.1\r\nHost: localhost\r\n\r\n"),
                HasSubstr("HTTP/1.1 400 "));
    EXPECT_THAT(Raw("rubbish\r\n\r\n"), HasSubstr("HTTP/1.1 400 "));
    EXPECT_THAT(
        Raw("GET / HTTP/1.1\r\nHost: localhost\r\nX: " + std::string(20000, 'x') + "\r\n\r\n"),
        HasSubstr("HTTP/1.1 431 "));
}

TEST_F(WebRequest, IsAnsweredWithWhatProtectsTheReader)
{
    for (const std::string target : {"/", "/page.js", "/api/", "/metrics", "/nothing"}) {
        const Response response = Get(board_.Port(), target);
        EXPECT_EQ(response.headers.at("x-content-type-options"), "nosniff") << target;
        EXPECT_THAT(response.headers.at("content-security-policy"),
                    HasSubstr("default-src 'none'; script-src 'self'; style-src 'self'"))
            << target;
        EXPECT_EQ(response.headers.at("cache-control"), "no-store") << target;
        for (const auto& [name, value] : response.headers)
            EXPECT_FALSE(name.starts_with("access-control")) << target << name;
    }
}

TEST_F(WebRequest, MayFollowAnotherOnOneConnection)
{
    Connection connection(board_.Port());
    connection.Send("GET /page.css HTTP/1.1\r\nHost: localhost\r\n\r\n");
    const std::string first = connection.ReadUntil("prefers-reduced-motion");
    EXPECT_EQ(Parsed(first).status, 200);
    connection.Send("GET /icon.svg HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_THAT(connection.ReadUntil("</svg>"), HasSubstr("Content-Type: image/svg+xml"));
}

TEST_F(WebRequest, OfHundredsOfConnectionsLeavesRoomForTheNext)
{
    {
        std::vector<std::unique_ptr<Connection>> idle;
        for (int i = 0; i < 600; ++i)
            idle.push_back(std::make_unique<Connection>(board_.Port()));
    }
    EXPECT_TRUE(Eventually([&] { return Get(board_.Port(), "/").status == 200; }));
}

}  // namespace
}  // namespace webtest
