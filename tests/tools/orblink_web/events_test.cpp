// The stream of events.
#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

using testing::HasSubstr;

constexpr char kFollow[] = "GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n";

uint64_t Metric(const WebOnBoard& board, const std::string& name)
{
    const std::string text = Get(board.Port(), "/metrics").body;
    const size_t at = text.find("\n" + name + " ");
    return at == std::string::npos ? 0 : std::stoull(text.substr(at + name.size() + 2));
}

TEST(WebEvents, BeginWithAllThatIsKnown)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", "Live"));
    Connection events(board.Port());
    events.Send(kFollow);
    const std::string text = events.ReadUntil("event: rates");
    EXPECT_THAT(text, HasSubstr("Content-Type: text/event-stream"));
    for (const std::string name : {"history", "state", "drawing", "ports", "counters", "phys",
                                   "registers", "mac", "changes", "log"})
        EXPECT_THAT(text, HasSubstr("event: " + name + "\ndata: "));
}

TEST(WebEvents, TellOfALinkThatGoesDown)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", "of 8 links up"));
    Connection events(board.Port());
    events.Send(kFollow);
    events.ReadUntil("event: rates");
    board.Control("link sw0:1 down");
    EXPECT_THAT(events.ReadUntil("port 0:1: link down"), HasSubstr("port 0:1: link down"));
}

TEST(WebEvents, OfAClientThatDoesNotReadHoldUpNobody)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", "Live"));
    std::vector<std::unique_ptr<Connection>> sleepers;
    for (int i = 0; i < 50; ++i) {
        sleepers.push_back(std::make_unique<Connection>(board.Port()));
        sleepers.back()->KeepLittle();
        sleepers.back()->Send(kFollow);
    }
    EXPECT_TRUE(Eventually([&] { return Metric(board, "orblink_web_event_clients") == 50; }));
    Connection events(board.Port());
    events.Send(kFollow);
    events.ReadUntil("event: rates");
    board.Control("link sw0:1 down");
    EXPECT_THAT(events.ReadUntil("port 0:1: link down"), HasSubstr("port 0:1: link down"));
    sleepers.clear();
    EXPECT_TRUE(Eventually([&] { return Metric(board, "orblink_web_event_clients") == 1; }));
}

TEST(WebEvents, HaveRoomForSoManyAndNoMore)
{
    WebOnBoard board("no_devices");
    board.Serve();
    std::vector<std::unique_ptr<Connection>> clients;
    for (int i = 0; i < 128; ++i) {
        clients.push_back(std::make_unique<Connection>(board.Port()));
        clients.back()->Send(kFollow);
    }
    ASSERT_TRUE(Eventually([&] { return Metric(board, "orblink_web_event_clients") == 128; }));
    Connection late(board.Port());
    late.Send(kFollow);
    EXPECT_EQ(Parsed(late.ReadAll()).status, 503);
    EXPECT_EQ(Get(board.Port(), "/").status, 200);
}

}  // namespace
}  // namespace webtest
