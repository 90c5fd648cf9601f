// The program itself: options, beginning and end.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <vector>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

using testing::HasSubstr;

struct Ended {
    int code;
    std::string out;
    std::string err;
};

Ended RunProgram(const std::string& options)
{
    const Scratch scratch;
    const std::string line = "timeout 10 " + Program("orblink-web") + " " + options + " >" +
                             scratch.Path("out") + " 2>" + scratch.Path("err");
    const int status = std::system(line.c_str());
    return {WEXITSTATUS(status), scratch.Read("out"), scratch.Read("err")};
}

TEST(WebProgram, RefusesWhatItCannotTake)
{
    for (const std::string options :
         {"--listen 8080", "--listen 127.0.0.1:65536", "--listen 127.0.0.1:", "--listen ::1:80",
          "--listen example.org:80", "--listen", "--registers -1", "--registers x", "--nothing",
          "word"}) {
        const Ended ended = RunProgram(options);
        EXPECT_EQ(ended.code, 2) << options;
        EXPECT_EQ(ended.out, "") << options;
        EXPECT_TRUE(ended.err.starts_with("orblink-web: ") && ended.err.ends_with('\n') &&
                    ended.err.find('\n') == ended.err.size() - 1)
            << options << ": " << ended.err;
    }
    EXPECT_THAT(RunProgram("--listen example.org:80").err, HasSubstr("'example.org:80'"));
}

TEST(WebProgram, SaysInOneLineThatItsPortIsTaken)
{
    WebOnBoard board("no_devices");
    board.Serve();
    const std::string address = "127.0.0.1:" + std::to_string(board.Port());
    const Ended ended = RunProgram("--listen " + address);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "orblink-web: " + address + ": Address already in use\n");
    EXPECT_EQ(RunProgram("--listen 203.0.113.1:80").code, 1);
}

TEST(WebProgram, EndsAtOnceAlsoWithClients)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        WebOnBoard board("one_switch");
        board.BringUp();
        board.Serve();
        ASSERT_TRUE(board.Shows("/", "Live"));
        std::vector<std::unique_ptr<Connection>> clients;
        for (int i = 0; i < 20; ++i) {
            clients.push_back(std::make_unique<Connection>(board.Port()));
            clients.back()->Send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
            clients.back()->ReadUntil("event: rates");
        }
        // Its own end is within a second; a busy machine is given more.
        EXPECT_EQ(board.Web().End(signal, 3000), 0) << signal;
        EXPECT_FALSE(Connection(board.Port()).IsOpen());
    }
}

TEST(WebProgram, IsNotHarmedByClosedStandardStreams)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    const int port = board.Port();
    ASSERT_EQ(board.Web().End(SIGTERM), 0);
    const auto web = board.Start("exec " + Program("orblink-web") +
                                 " --listen 127.0.0.1:" + std::to_string(port) + " <&- >&- 2>&-");
    ASSERT_TRUE(Eventually([&] { return Connection(port).IsOpen(); }));
    EXPECT_TRUE(board.Shows("/", "<p class=\"state good\">Live</p>"));
    EXPECT_TRUE(Get(port, "/icon.svg").body.starts_with("<svg "));
    EXPECT_EQ(web->End(SIGTERM), 0);
}

TEST(WebProgram, ManualPageNamesEveryOption)
{
    const std::string help = RunProgram("--help").out;
    std::ifstream file(ORBLINK_SOURCE "/tools/orblink_web/orblink-web.1");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    std::istringstream words(help);
    int options = 0;
    for (std::string word; words >> word;) {
        const size_t begin = word.find("--");
        if (begin == std::string::npos || word.size() < begin + 4)
            continue;
        std::string option = word.substr(begin);
        for (size_t at = 0; (at = option.find('-', at)) != std::string::npos; at += 2)
            option.insert(at, "\\");
        EXPECT_THAT(page, HasSubstr(option));
        ++options;
    }
    EXPECT_EQ(options, 7);
}

}  // namespace
}  // namespace webtest
