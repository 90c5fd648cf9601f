// What becomes of the page when the board is not there, goes away or is damaged.
#include <gmock/gmock.h>
#include <signal.h>

#include <fstream>
#include <vector>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kLive[] = "<p class=\"state good\">Live</p>";

TEST(WebBoard, IsShownOnceItIsInitialised)
{
    WebOnBoard board("one_switch");
    board.Serve();
    ASSERT_TRUE(board.Shows("/", "is not initialised: run &#39;orblinkctl init&#39; first (4)"));
    const Response response = Get(board.Port(), "/api/");
    EXPECT_EQ(response.status, 503);
    EXPECT_THAT(response.body, HasSubstr("\"code\":4"));
    board.BringUp();
    EXPECT_TRUE(board.Shows("/", kLive));
    EXPECT_TRUE(board.Shows("/api/port", "\"vlan\": 1"));
}

TEST(WebBoard, MayGoAwayAndComeBackAsAnother)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    ASSERT_EQ(board
                  .Run("head -c 5740 /dev/zero | dd of=/dev/shm/obos_orblink_driver conv=notrunc "
                       "status=none")
                  .code,
              0);
    EXPECT_TRUE(board.Shows("/", "is not initialised, its region holds nothing"));
    EXPECT_EQ(board.Run("orblinkctl recover --switch --apply").code, 0);
    EXPECT_TRUE(board.Shows("/", "is not initialised"));
    board.Control("mailbox resend switch");
    ASSERT_EQ(board.Run("orblinkctl init --switch && orblinkctl up 0").code, 0);
    EXPECT_TRUE(board.Shows("/", kLive));
}

TEST(WebBoard, ThatIsDamagedIsNotShownAsFacts)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    ASSERT_EQ(board
                  .Run("printf '\\311\\030' | dd of=/dev/shm/obos_orblink_driver bs=1 seek=188 "
                       "conv=notrunc status=none")
                  .code,
              0);
    EXPECT_TRUE(board.Shows("/", "port 0:2 has VLAN 6345, the most is 4094"));
    const Response response = Get(board.Port(), "/api/");
    EXPECT_EQ(response.status, 503);
    EXPECT_THAT(response.body, HasSubstr("\"code\":8"));
    EXPECT_THAT(Get(board.Port(), "/").body, Not(HasSubstr("<th scope=\"row\">0:2</th>")));
}

// Whoever touches the end of a region that was cut is ended by the kernel.
TEST(WebBoard, ThatIsCutShortEndsNobody)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    ASSERT_EQ(board.Run("truncate -s 0 /dev/shm/obos_orblink_driver").code, 0);
    EXPECT_TRUE(board.Shows("/api/", "\"code\":8"));
    EXPECT_EQ(Get(board.Port(), "/").status, 200);
}

std::vector<pid_t> ChildrenOf(pid_t parent)
{
    std::vector<pid_t> children;
    std::ifstream list("/proc/" + std::to_string(parent) + "/task/" + std::to_string(parent) +
                       "/children");
    for (pid_t child = 0; list >> child;)
        children.push_back(child);
    return children;
}

TEST(WebBoard, IsReadAgainWhenTheReaderWasKilled)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    const auto readers = ChildrenOf(board.ProcessId());
    ASSERT_EQ(readers.size(), 1U);
    ASSERT_EQ(kill(readers[0], SIGKILL), 0);
    EXPECT_TRUE(board.Shows("/", "The process that reads the board has ended: Killed."));
    EXPECT_TRUE(board.Shows("/", kLive));
    EXPECT_TRUE(board.Shows("/metrics", "orblink_web_reader_starts_total 2"));
}

TEST(WebBoard, ReaderEndsWithTheServer)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    const auto readers = ChildrenOf(board.ProcessId());
    ASSERT_EQ(readers.size(), 1U);
    ASSERT_EQ(kill(board.ProcessId(), SIGKILL), 0);
    EXPECT_TRUE(Eventually([&] { return kill(readers[0], 0) == -1; }));
}

// The lock of the family, held by somebody who lives: what was read before is not wrong.
TEST(WebBoard, ThatIsBusyKeepsWhatWasRead)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/", kLive));
    const auto holder = board.Start("exec $ORBLINK_BUILD/tests/lock_holder switch take wait");
    ASSERT_EQ(holder->Line(), "ready");
    EXPECT_TRUE(board.Shows("/", "has held the lock since"));
    EXPECT_THAT(Get(board.Port(), "/").body, HasSubstr("<th scope=\"row\">0:2</th>"));
}

}  // namespace
}  // namespace webtest
