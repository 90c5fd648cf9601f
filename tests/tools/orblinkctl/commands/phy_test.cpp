// Standalone PHYs, their registers, and a dump decoded.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The first PHY negotiates within the real time that is left between two commands, not within the
// shortened one.
constexpr char kUntilLink[] =
    "for i in $(seq 100); do ctl phy 0 link | grep -q yes && break; sleep 0.1; done";

TEST(Phy, GoesUpAndDown)
{
    const auto r = OnBoard("phy", {"ctl init | sed -n 2p", "ctl phy 0 link", "ctl phy 0 up",
                                   kUntilLink, "ctl phy 0 link", "ctl phy 0 down", "ctl phy 0 link",
                                   "ctl mdio 0 1", "ctl phy 0 config -o kv | grep state"});
    EXPECT_THAT(r[0], Prints("phy family: 2 found\n"));
    EXPECT_THAT(r[2], Prints("PHY 0: state enabled\n"));
    EXPECT_THAT(r[4], Prints("PHY  LINK  LINK SPEED  LINK DUPLEX\n  0  yes         2500  full\n"));
    EXPECT_THAT(r[5], Prints("PHY 0: state in reset\n"));
    EXPECT_THAT(r[6], Prints("PHY  LINK  LINK SPEED  LINK DUPLEX\n  0  no    -           -\n"));
    EXPECT_THAT(r[7], Refuses(5, "PHY 0 is in reset: orblinkctl phy 0 up"));
    EXPECT_THAT(r[8], Prints("phys.0.state=\"in reset\"\n"));
}

TEST(Phy, SettingsReachThePhy)
{
    const auto r = OnBoard(
        "phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null", "ctl phy 0 speed 100 half",
                "ctl mmd 0 7 32", "ctl mdio 0 9", "ctl mdio 0 4", "ctl phy 0 speed 1000",
                "ctl mdio 0 9", "ctl phy 0 disable", "ctl mdio 0 0 --decode | grep 'power down'",
                "ctl phy 0 enable", "ctl mdio 0 0 --decode | grep 'power down'",
                "ctl phy 0 eee off", "ctl mmd 0 7 60", "ctl phy 0 eee on", "ctl phy 0 poll"});
    EXPECT_THAT(r[1], Prints("PHY 0: speed 100\nPHY 0: duplex half\n"));
    EXPECT_THAT(r[2], Prints("0x0020: 0x4002\n"));
    EXPECT_THAT(r[3], Prints("0x0009: 0x0000\n"));
    EXPECT_THAT(r[4], Prints("0x0004: 0x0ce1\n"));
    EXPECT_THAT(r[5], Prints("PHY 0: speed 1000\nPHY 0: duplex full\n"));
    EXPECT_THAT(r[6], Prints("0x0009: 0x0200\n"));
    EXPECT_THAT(r[7], Prints("PHY 0: admin off\n"));
    EXPECT_THAT(r[8], Prints("       11  power down: 1\n"));
    EXPECT_THAT(r[9], Prints("PHY 0: admin on\n"));
    EXPECT_THAT(r[10], Prints("       11  power down: 0\n"));
    EXPECT_THAT(r[11], Prints("PHY 0: eee off\n"));
    EXPECT_THAT(r[12], Prints("0x003c: 0x0000\n"));
    EXPECT_THAT(r[13], Prints("PHY 0: eee on\n"));
    EXPECT_THAT(r[14], Prints("PHY 0: poll done\n"));
}

// The partner of the first PHY is a modern one.
TEST(Phy, SaysWhatItAndItsPartnerOffer)
{
    const auto r =
        OnBoard("phy", {"ctl init >/dev/null; for n in 0 1; do ctl phy $n up; done >/dev/null",
                        kUntilLink, "ctl phy 0 speed", "ctl phy 0 speed --json", "ctl phy 0 eee",
                        "ctl phy 0 eee on >/dev/null", kUntilLink, "ctl phy 0 eee",
                        "ctl phy 1 caps", "ctl phy 0 down >/dev/null; ctl phy 0 speed"});
    EXPECT_THAT(r[2], Prints("PHY 0: speed auto, link 2500 full\n"
                             "  offers: 10/half 10/full 100/half 100/full 1000/half 1000/full "
                             "2500/full\n"
                             "  the partner offers: 100/full 1000/full 2500/full\n"));
    const auto phy = Json(r[3])["phys"][0];
    EXPECT_EQ(phy["negotiation"], true);
    EXPECT_EQ(phy["partner_offers"], nlohmann::json({"100/full", "1000/full", "2500/full"}));
    EXPECT_THAT(r[4], Prints("PHY 0: eee off, not in use, link 2500 full\n"
                             "  offers it at: -\n"
                             "  the partner offers it at: 100 1000 2500\n"));
    EXPECT_THAT(r[7], Prints("PHY 0: eee on, in use, link 2500 full\n"
                             "  offers it at: 100 1000 2500\n"
                             "  the partner offers it at: 100 1000 2500\n"));
    EXPECT_THAT(r[8], Prints("PHY 1: capabilities 0x000b30ef\n"
                             "  it can 10/half 10/full 100/half 100/full 1000/half 1000/full "
                             "2500/full negotiation clause-45 eee-100 eee-1000 eee-2500\n"));
    EXPECT_THAT(r[9], Refuses(5, "PHY 0 is in reset: orblinkctl phy 0 up"));
}

// With the negotiation off, the speed and duplex of register 0 are what counts.
TEST(Phy, AForcedSpeedOffersNothing)
{
    const auto r = OnBoard("phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null; "
                                   "ctl mdio 0 0 0x2100 >/dev/null; ctl phy 0 speed --json"});
    const auto phy = Json(r[0])["phys"][0];
    EXPECT_EQ(phy["negotiation"], false);
    EXPECT_EQ(phy["speed"], 100);
    EXPECT_EQ(phy["duplex"], "full");
    EXPECT_TRUE(phy["offers"].is_null());
    EXPECT_TRUE(phy["partner_offers"].is_null());
}

TEST(Phy, TellsWhatItIs)
{
    const auto r =
        OnBoard("phy", {"ctl init >/dev/null", "ctl phy 0 caps", "ctl phy 0 up >/dev/null",
                        "ctl phy 0 caps -o kv", "ctl phy 0 board --json", "ctl phy 0 config --json",
                        "ctl phy --json", "ctl phy 0 lane-reset", "ctl show | grep -A2 '^PHY 0'",
                        "ctl phy 0 counters", "ctl phy 0 counters reset", "ctl phy 0 reg 2-3"});
    EXPECT_THAT(r[1],
                Refuses(4, "the capabilities of PHY 0 are not known yet: orblinkctl phy 0 up"));
    EXPECT_THAT(r[3].out, StartsWith("schema=2\nphys.0.phy=0\nphys.0.capabilities="));
    EXPECT_EQ(Json(r[4])["phys"][0]["mdio_address"], 4);
    EXPECT_EQ(Json(r[4])["phys"][0]["reset_pin"], 19);
    EXPECT_EQ(Json(r[5])["phys"][0]["admin"], true);
    EXPECT_EQ(Json(r[6])["phys"].size(), 2U);
    EXPECT_EQ(Json(r[6])["phys"][1]["state"], "never brought up");
    EXPECT_THAT(r[7], Prints("PHY 0: lane reset\n"));
    EXPECT_THAT(r[8].out, HasSubstr("PHY 0: enabled, admin on, capabilities "));
    EXPECT_THAT(r[9], Succeeds());
    EXPECT_THAT(r[10], Prints("PHY 0: counters 0\n"));
    EXPECT_THAT(r[11], Succeeds());
}

TEST(Phy, ARegisterThatDoesNotAnswerIsNotGuessed)
{
    const auto r =
        OnBoard("phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null", "ctl mdio 0 | wc -l",
                        "ctl mdio 0 | sed -n 12p", "ctl mdio 0 --json", "ctl mdio 0 11",
                        "ctl phy 0 down; ctl mdio 0"});
    EXPECT_THAT(r[1], Prints("32\n"));
    EXPECT_THAT(r[2], Prints("0x000b: -\n"));
    EXPECT_TRUE(Json(r[3])["registers"][11]["value"].is_null());
    EXPECT_FALSE(Json(r[3])["registers"][2]["value"].is_null());
    EXPECT_THAT(
        r[4], Refuses(1,
                      "PHY 0 register 0x000b could not be read: MDIO bus 0 address 4 register 11: "
                      "Input/output error: orblinkctl doctor"));
    EXPECT_EQ(r[5].code, 5);
}

// Only the first of the two PHYs is up.
TEST(Phy, TheBareWordsListWhatCanBeRead)
{
    const auto r =
        OnBoard("phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null", "ctl mdio", "ctl mmd",
                        "ctl mdio --json", "ctl mmd --json",
                        "board fault mdio-error --times 0; ctl mdio --json", "ctl mmd --json",
                        "board fault clear; ctl phy 0 down; ctl mdio; ctl mmd"});
    EXPECT_THAT(r[1], Prints("PHY  LABEL  STATE             MDIO BUS  MDIO ADDRESS  REGISTER 2  "
                             "REGISTER 3  ERROR\n"
                             "  0  -      enabled                  0             4  0x0a5a      "
                             "0x8023      -\n"
                             "  1  -      never brought up         0             5  -           "
                             "-           -\n"));
    EXPECT_THAT(r[2], Prints("PHY  LABEL  STATE             MDIO BUS  MDIO ADDRESS  REGISTER 1.5  "
                             "REGISTER 1.6  MMDS\n"
                             "  0  -      enabled                  0             4  0x008b        "
                             "0x8000        1 3 7 31\n"
                             "  1  -      never brought up         0             5  -             "
                             "-             -\n"));
    EXPECT_EQ(Json(r[3])["phys"][0]["register_2"], 0x0A5A);
    EXPECT_TRUE(Json(r[3])["phys"][1]["register_2"].is_null());
    EXPECT_EQ(Json(r[4])["phys"][0]["mmds"], nlohmann::json({1, 3, 7, 31}));
    EXPECT_TRUE(Json(r[4])["phys"][1]["mmds"].is_null());
    EXPECT_EQ(r[5].code, 1);
    const auto phys = nlohmann::json::parse(r[5].out)["phys"];
    EXPECT_TRUE(phys[0]["register_3"].is_null());
    EXPECT_THAT(std::string(phys[0]["error"]), StartsWith("PHY 0 could not be read: MDIO bus "));
    EXPECT_TRUE(phys[1]["error"].is_null());
    EXPECT_THAT(r[6], Succeeds());
    EXPECT_TRUE(Json(r[6])["phys"][0]["mmds"].is_null());
    EXPECT_EQ(r[7].code, 0);
    EXPECT_THAT(r[7].out, testing::Not(HasSubstr("0x")));
}

TEST(Phy, RegistersAreWrittenUnderAMask)
{
    const auto r =
        OnBoard("phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null", "ctl mdio 0 4 0x0de1",
                        "ctl mdio 0 4 0x400/0xc00", "ctl mdio 0 4", "ctl mmd 0 7 60 0",
                        "ctl mmd 0 7 60 --decode", "ctl phy 0 reg 4 0x0de1"});
    EXPECT_THAT(r[1], Prints("PHY 0: register 0x0004 0x0de1\n"));
    EXPECT_THAT(r[2], Prints("PHY 0: register 0x0004 0x05e1\n"));
    EXPECT_THAT(r[3], Prints("0x0004: 0x05e1\n"));
    EXPECT_THAT(r[4], Prints("PHY 0: register 0x003c 0x0000\n"));
    EXPECT_THAT(r[5], Prints("0x003c: 0x0000  EEE advertisement 1\n"
                             "        3  10GBASE-T EEE: 0\n"
                             "        2  1000BASE-T EEE: 0\n"
                             "        1  100BASE-TX EEE: 0\n"));
    EXPECT_THAT(r[6], Prints("PHY 0: register 0x0004 0x0de1\n"));
}

// The second PHY of the board is driven by the general HAL, whose counters are known.
TEST(Phy, CountersOfTheGeneralHalHaveNames)
{
    const auto r = OnBoard("phy", {"ctl init >/dev/null; ctl phy 1 up", "ctl phy 1 counters --json",
                                   "ctl metrics | grep -c '^orblink_phy_link_up'"});
    EXPECT_THAT(r[0], Prints("PHY 1: state enabled\n"));
    const auto counters = Json(r[1])["phys"][0]["counters"];
    EXPECT_EQ(counters.size(), 10U);
    EXPECT_EQ(counters["link_drops"], 0);
    EXPECT_EQ(counters["idle_errors"], 0);
    EXPECT_TRUE(counters["errored_blocks"].is_null() || counters["errored_blocks"] == 0);
    EXPECT_THAT(r[2], Prints("2\n"));
}

TEST(Phy, WhatAPhyCannotDoIsNotSupported)
{
    const Scratch files;
    files.Write("board.toml",
                "name = \"old PHY\"\n"
                "mac_addresses = [\"02:00:5e:00:04:01\", \"02:00:5e:00:04:02\", "
                "\"02:00:5e:00:04:03\", \"02:00:5e:00:04:04\", \"02:00:5e:00:04:05\"]\n"
                "[[phy]]\nhal = \"libethphy_ieee8023.so\"\nchip = \"ieee8023\"\nserdes = 0\n"
                "reset_pin = \"none\"\nmdio_bus = 0\nmdio_address = 5\nport_mode = \"SGMII\"\n"
                "port_speed = \"1G\"\neee = false\n");
    const auto r =
        OnBoard(files.Path("board.toml"),
                {"ctl init --phy >/dev/null; ctl phy 0 up >/dev/null", "ctl phy 0 eee on"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_THAT(r[1], Refuses(5, "PHY 0 does not support 802.3az"));
}

TEST(Phy, ADumpIsDecodedWithoutABoard)
{
    const auto r = OnBoard(
        "no_devices", {"printf '0x0003: 0x5621\\n\\n0x001e: 0x1234\\n' >dump; ctl mdio decode dump",
                       "ctl mdio decode dump --json",
                       "printf '0x20: 0x1080\\n' >dump; "
                       "ctl mmd decode 7 dump"});
    EXPECT_THAT(r[0], Prints("0x0003: 0x5621  identifier 2\n"
                             "    15:10  OUI bits 19 to 24: 21\n"
                             "      9:4  model: 34\n"
                             "      3:0  revision: 1\n"
                             "0x001e: 0x1234  -\n"));
    EXPECT_TRUE(Json(r[1])["registers"][1]["name"].is_null());
    EXPECT_EQ(Json(r[1])["registers"][1]["bits"], nlohmann::json::array());
    EXPECT_THAT(r[2].out, HasSubstr("       12  10GBASE-T: 1\n"));
    EXPECT_THAT(r[2].out, HasSubstr("        7  2.5GBASE-T: 1\n"));
}

}  // namespace
}  // namespace onboard
