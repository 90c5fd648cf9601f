// What programs read: JSON and measured values.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "tests/tools/orblink_web/http_client.h"
#include "tests/tools/orblink_web/web_on_board.h"

namespace webtest {
namespace {

std::string Replaced(std::string text, char from, char to)
{
    for (char& c : text)
        c = c == from ? to : c;
    return text;
}

TEST(WebApi, IsByteForByteTheJsonOfTheTool)
{
    WebOnBoard board("phy");
    board.BringUp();
    board.Serve();
    for (const std::string path :
         {"", "port", "phy", "switch", "vlan", "mac-vlan", "bridge-mode", "show", "board", "mac",
          "port/0:1/counters", "phy/1/counters", "mdio/0/0-10"}) {
        std::string tool;
        std::string web;
        const bool same = Eventually([&] {
            tool = board.Run("orblinkctl --json " + Replaced(path, '/', ' ')).out;
            const Response response = Get(board.Port(), "/api/" + path);
            web = response.body;
            return response.status == 200 && !tool.empty() && web == tool;
        });
        EXPECT_TRUE(same) << path << "\ntool: " << tool << "\nweb: " << web;
    }
    const Response response = Get(board.Port(), "/api/port");
    EXPECT_EQ(response.headers.at("content-type"), "application/json");
    EXPECT_EQ(response.headers.count("access-control-allow-origin"), 0U);
    EXPECT_EQ(response.headers.count("age"), 1U);
}

TEST(WebApi, SaysWhatThereIsWhenAskedForSomethingElse)
{
    WebOnBoard board("one_switch");
    board.BringUp();
    board.Serve();
    ASSERT_TRUE(board.Shows("/api/port", "\"ports\""));
    const Response response = Get(board.Port(), "/api/nothing%2fof/the sort");
    EXPECT_EQ(response.status, 400) << "a blank ends a target";
    const Response unknown = Get(board.Port(), "/api/port/0:1/disable");
    EXPECT_EQ(unknown.status, 404);
    EXPECT_THAT(unknown.body, testing::HasSubstr("\"code\":3"));
    EXPECT_THAT(unknown.body, testing::HasSubstr(" /api/port"));
}

bool IsName(const std::string& text)
{
    return !text.empty() &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string::npos;
}

// The labels in braces: name="value", with \\, \" and \n as the only escapes.
bool AreLabels(const std::string& text)
{
    size_t at = 0;
    while (at < text.size()) {
        const size_t equals = text.find("=\"", at);
        if (equals == std::string::npos || !IsName(text.substr(at, equals - at)))
            return false;
        size_t end = equals + 2;
        while (end < text.size() && text[end] != '"') {
            if (text[end] == '\\' && std::string("\\\"n").find(text[end + 1]) == std::string::npos)
                return false;
            end += text[end] == '\\' ? 2 : 1;
        }
        at = end + 1;
        if (end >= text.size() || (at < text.size() && text[at++] != ','))
            return false;
    }
    return true;
}

// Reads the text format strictly: HELP and TYPE of a name come once and before its samples, which
// stand together; counters end in _total.
class Exposition {
public:
    explicit Exposition(const std::string& text)
    {
        EXPECT_TRUE(text.ends_with('\n'));
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            line.starts_with("# ") ? TakeComment(line) : TakeSample(line);
    }

    std::set<std::string> Samples() const { return samples_; }
    size_t Count() const { return samples_.size(); }

private:
    void TakeComment(const std::string& line)
    {
        std::istringstream words(line.substr(2));
        std::string kind;
        std::string name;
        std::string rest;
        words >> kind >> name;
        std::getline(words >> std::ws, rest);
        EXPECT_TRUE(IsName(name) && !rest.empty()) << line;
        if (kind == "HELP") {
            EXPECT_TRUE(known_.insert(name).second) << "twice: " << line;
            name_ = name;
            type_.clear();
            return;
        }
        EXPECT_EQ(kind, "TYPE") << line;
        EXPECT_EQ(name, name_) << line;
        EXPECT_TRUE(rest == "gauge" || rest == "counter") << line;
        EXPECT_EQ(rest == "counter", name.ends_with("_total")) << line;
        type_ = rest;
    }

    void TakeSample(const std::string& line)
    {
        EXPECT_FALSE(type_.empty()) << line;
        const size_t blank = line.rfind(' ');
        ASSERT_NE(blank, std::string::npos) << line;
        const std::string key = line.substr(0, blank);
        const std::string value = line.substr(blank + 1);
        EXPECT_TRUE(samples_.insert(key).second) << "twice: " << line;
        EXPECT_EQ(key.substr(0, key.find('{')), name_) << line;
        if (key.find('{') != std::string::npos) {
            const size_t brace = key.find('{') + 1;
            EXPECT_TRUE(key.ends_with('}') && AreLabels(key.substr(brace, key.size() - brace - 1)))
                << line;
        }
        EXPECT_EQ(value.find_first_not_of("0123456789"), std::string::npos) << line;
        EXPECT_FALSE(value.empty()) << line;
    }

    std::set<std::string> known_;
    std::set<std::string> samples_;
    std::string name_;
    std::string type_;
};

TEST(WebMetrics, AreWhatPrometheusTakes)
{
    WebOnBoard board("phy");
    board.BringUp();
    board.Files().Write("names.toml", "[port]\n'a\"b\\c' = \"0:1\"\n");
    board.Serve("--names " + board.Files().Path("names.toml"));
    ASSERT_TRUE(board.Shows("/metrics", "\norblink_web_board_readable 1\n"));
    const Response response = Get(board.Port(), "/metrics");
    EXPECT_EQ(response.headers.at("content-type"), "text/plain; version=0.0.4; charset=utf-8");
    const Exposition exposition(response.body);
    EXPECT_GT(exposition.Count(), 200U);
    EXPECT_EQ(exposition.Samples().count(
                  "orblink_port_link_up{switch=\"0\",port=\"1\",label=\"a\\\"b\\\\c\"}"),
              1U);
    EXPECT_EQ(exposition.Samples().count("orblink_web_requests_total"), 1U);
}

TEST(WebMetrics, AreThereWithoutABoard)
{
    WebOnBoard board("one_switch");
    board.Serve();
    ASSERT_TRUE(board.Shows("/metrics", "orblink_initialised{family=\"switch\"} 0"));
    const Exposition exposition(Get(board.Port(), "/metrics").body);
    EXPECT_GT(exposition.Count(), 4U);
}

}  // namespace
}  // namespace webtest
