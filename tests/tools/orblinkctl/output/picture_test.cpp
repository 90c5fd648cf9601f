#include "tools/orblinkctl/output/picture.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/output/columns.h"

namespace ctl {
namespace {

// A switch of eight ports and a PHY, with labels as wide as people make them.
Model ABoard()
{
    Model board;
    Model wiring;
    wiring["lane"] = 0;
    wiring["interface"] = "hsgmii";
    wiring["interface_speed"] = 2500;
    Model device = {{"switch", 0},     {"state", "enabled"}, {"mtu", 2000},
                    {"aging", "300s"}, {"igmp", false},      {"bridge_mode", "off"}};
    device["board"] = wiring;
    board["switches"] = Model::array({device});
    board["ports"] = Model::array();
    for (int i = 0; i < 8; ++i) {
        Model port = {{"switch", 0},          {"port", i},
                      {"role", "phy"},        {"label", "会議室の電話"},
                      {"enabled", true},      {"link", true},
                      {"vlan", 4094},         {"eee", true},
                      {"dvt", true},          {"link_speed", 1000},
                      {"link_duplex", "full"}};
        port["mirror_to"] = 5;
        port["error"] = nullptr;
        board["ports"].push_back(port);
    }
    Model phy = {{"phy", 0},
                 {"state", "never brought up"},
                 {"admin", true},
                 {"label", "an uplink with a long name, very long"}};
    phy["board"] = wiring;
    phy["link"] = nullptr;
    phy["error"] = nullptr;
    board["phys"] = Model::array({phy});
    return board;
}

class PictureWithin : public testing::TestWithParam<size_t> {};

// All lines end at the same column, wide characters or not.
TEST_P(PictureWithin, FitsAndIsAligned)
{
    const Picture picture = DrawBoard(ABoard(), GetParam());
    std::istringstream lines(PictureText(picture, true, false));
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_LE(ColumnsOf(line), GetParam()) << line;
        EXPECT_EQ(ColumnsOf(line), static_cast<size_t>(picture.width)) << line;
    }
    EXPECT_EQ(count, static_cast<size_t>(picture.height));
}

INSTANTIATE_TEST_SUITE_P(Widths, PictureWithin, testing::Values(20, 40, 60, 80, 120));

TEST(PictureWithout, WiresNamesTheLaneInTheBox)
{
    const std::string text = PictureText(DrawBoard(ABoard(), 40), false, false);
    EXPECT_THAT(text, testing::HasSubstr("|lane 0 hsgmii 2500"));
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("SoC")));
    EXPECT_THAT(PictureText(DrawBoard(ABoard(), 80), false, false), testing::HasSubstr("| SoC |"));
}

}  // namespace
}  // namespace ctl
