#include "tools/orblinkctl/facts/link_history.h"

#include <gmock/gmock.h>

namespace ctl {
namespace {

Model Ports(const Model& link)
{
    Model port;
    port["switch"] = 0;
    port["port"] = 2;
    port["link"] = link;
    return Model::array({std::move(port)});
}

TEST(LinkHistory, TheFirstLookIsNoChange)
{
    LinkHistory links;
    EXPECT_FALSE(links.Note("port 0:1", true));
    EXPECT_EQ(links.FlapsOf("port 0:1"), 0U);
    EXPECT_TRUE(links.LastChangeOf("port 0:1").is_null());
}

TEST(LinkHistory, CountsComingAndGoing)
{
    LinkHistory links;
    links.Note("port 0:1", true);
    EXPECT_TRUE(links.Note("port 0:1", false));
    EXPECT_FALSE(links.Note("port 0:1", false));
    EXPECT_TRUE(links.Note("port 0:1", true));
    EXPECT_EQ(links.FlapsOf("port 0:1"), 2U);
    EXPECT_EQ(links.FlapsOf("port 0:2"), 0U);
    EXPECT_THAT(links.LastChangeOf("port 0:1").get<std::string>(), testing::EndsWith("Z"));
}

// A port that could not be read for a moment has not changed.
TEST(LinkHistory, TheUnknownIsNoChange)
{
    LinkHistory links;
    links.Note("port 0:1", true);
    EXPECT_FALSE(links.Note("port 0:1", nullptr));
    EXPECT_FALSE(links.Note("port 0:1", true));
    EXPECT_EQ(links.FlapsOf("port 0:1"), 0U);
}

TEST(LinkHistory, GivesThePortsTheirs)
{
    LinkHistory links;
    Model up = Ports(true);
    links.Note(up);
    EXPECT_EQ(up[0]["flaps"], 0);
    EXPECT_TRUE(up[0]["last_change"].is_null());
    Model down = Ports(false);
    links.Note(down);
    EXPECT_EQ(down[0]["flaps"], 1);
    EXPECT_TRUE(down[0]["last_change"].is_string());
}

}  // namespace
}  // namespace ctl
