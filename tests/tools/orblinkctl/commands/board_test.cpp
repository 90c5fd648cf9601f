// The board as a whole: initialisation, overview, services, exit codes 3, 4, 6 and 7.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char kTwoSwitches[] =
    "switch family: 2 found\n"
    "phy family: 0 found: the board data name none\n"
    "MAC address 02:00:5e:00:00:01\n"
    "MAC address 02:00:5e:00:00:02\n"
    "MAC address 02:00:5e:00:00:03\n"
    "MAC address 02:00:5e:00:00:04\n"
    "MAC address 02:00:5e:00:00:05\n"
    "next: orblinkctl up 0, orblinkctl up 1\n";

TEST(Board, EveryFamilyMustBeInitialisedFirst)
{
    const auto r =
        OnBoard("two_switches", {"ctl show", "ctl", "ctl port 0:2", "ctl phy", "ctl up 0"});
    const char* board = "the board is not initialised: run 'orblinkctl init' first";
    const char* switches = "the switch family is not initialised: run 'orblinkctl init' first";
    EXPECT_THAT(r[0], Refuses(4, board));
    EXPECT_THAT(r[1], Refuses(4, board));
    EXPECT_THAT(r[2], Refuses(4, switches));
    EXPECT_THAT(r[3], Refuses(4, "the PHY family is not initialised: run 'orblinkctl init' first"));
    EXPECT_THAT(r[4], Refuses(4, switches));
}

TEST(Board, IsInitialisedOnce)
{
    const auto r = OnBoard("two_switches", {"ctl init", "ctl init", "ctl init --phy"});
    EXPECT_THAT(r[0], Prints(kTwoSwitches));
    EXPECT_THAT(r[1], Refuses(4, "the switch family is already initialised"));
    EXPECT_THAT(r[2], Refuses(4,
                              "the PHY family is already initialised: no devices, or "
                              "initialisation unfinished; the lock is free: orblinkctl recover "
                              "--apply"));
}

TEST(Board, InitialisationWithoutGoodBoardDataIsAFailure)
{
    const char* complaint =
        "the switch family is initialised, but without devices: no good board data came over the "
        "mailbox (-v shows the exchange)";
    const auto refused = OnBoard(
        "one_switch", {"board fault message-type 99; ctl -v init --switch", "ctl init --switch"});
    EXPECT_THAT(refused[0], Fails(1, complaint));
    EXPECT_THAT(refused[0].err, HasSubstr("Unsupported message type=99\n"));
    EXPECT_THAT(refused[1].err, HasSubstr("the switch family is already initialised: no devices"));
    const auto absent = OnBoard("one_switch", {"board fault receive-error; ctl init --switch"});
    EXPECT_THAT(absent[0], Fails(1, complaint));
}

// The application CPU says nothing: the waiting ends, and nothing is left that keeps the next
// initialisation from its work.
TEST(Board, InitialisationThatGetsNoAnswerIsUndone)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    const auto r =
        OnBoard("one_switch",
                {"board fault silent --times 0; ctl --wait 0.3 init --switch",
                 "ls /dev/shm; ipcs -s | grep 0x", "ctl --wait 1.2 init --switch",
                 "board fault clear; ctl init --switch >/dev/null", "ctl port -o kv | head -2"});
    const char* complaint =
        "no board data came from the application CPU within 0.3 s; what was made is undone";
    EXPECT_THAT(r[0], Refuses(1, complaint));
    EXPECT_EQ(r[1].out, "");
    EXPECT_EQ(r[2].code, 1);
    EXPECT_THAT(r[2].err, StartsWith("orblinkctl: the switch family waits for board data from the "
                                     "application CPU, 1.2 s at most\n"));
    EXPECT_THAT(r[3], Succeeds());
    EXPECT_THAT(r[4], Prints("schema=2\nports.0.switch=0\n"));
}

TEST(Board, InitialisationThatIsInterruptedIsUndone)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    const auto r = OnBoard(
        "one_switch",
        {"board fault silent --times 0; orblinkctl init --switch & "
         "until [ -e /dev/shm/obos_orblink_driver ]; do sleep 0.01; done; kill -INT $!; wait $!",
         "ls /dev/shm; ipcs -s | grep 0x", "board fault clear; ctl init --switch >/dev/null"});
    EXPECT_THAT(r[0], Refuses(1, "the switch family: interrupted; what was made is undone"));
    EXPECT_EQ(r[1].out, "");
    EXPECT_THAT(r[2], Succeeds());
}

TEST(Board, AMissingHalIsOneReasonedLine)
{
    const Scratch scratch;
    std::ifstream file(ORBLINK_SOURCE "/virtual_board/boards/one_switch.toml");
    std::string text(std::istreambuf_iterator<char>(file), {});
    const std::string present = "liborblink_velmar.so";
    ASSERT_NE(text.find(present), std::string::npos);
    text.replace(text.find(present), present.size(), "libabsent.so");
    scratch.Write("board.toml", text);
    const auto r = OnBoard(scratch.Path("board.toml"), {"ctl init --switch"});
    EXPECT_EQ(r[0].code, 1);
    EXPECT_THAT(r[0].err, StartsWith("orblinkctl: the switch family: a HAL library that the board "
                                     "data name cannot be loaded: so='libabsent.so'"));
    EXPECT_EQ(std::count(r[0].err.begin(), r[0].err.end(), '\n'), 1);
}

TEST(Board, FamiliesAreInitialisedOneByOne)
{
    const auto r =
        OnBoard("one_switch", {"ctl init --switch --no-defaults -o kv", "ctl show | tail -1",
                               "ctl switch 0 caps", "ctl init --phy", "ctl port 0:1"});
    EXPECT_THAT(r[0].out, StartsWith("schema=2\nfamilies.0.family=switch\n"
                                     "families.0.devices=1\nmac_addresses.0=02:00:5e:00:01:01\n"));
    EXPECT_THAT(r[1], Prints("PHY family: not initialised\n"));
    const char* unknown = "the capabilities of switch 0 are not known yet: orblinkctl up 0";
    EXPECT_THAT(r[2], Refuses(4, unknown));
    EXPECT_THAT(r[3], Prints("phy family: 0 found: the board data name none\n"));
    EXPECT_THAT(r[4], Refuses(4, unknown));
}

TEST(Board, ShowsWiringAndStoredSettings)
{
    const auto r = OnBoard("one_switch", {"ctl init", "ctl show"});
    EXPECT_THAT(
        r[1],
        Prints("switch 0: never brought up, 8 ports\n"
               "  HAL liborblink_velmar.so, lane 0, hsgmii 2500, MDIO bus 0 address 16, "
               "reset pin 18, enable pin none\n"
               "  internal port 0, pre-reset argument 0\n"
               "  bridge mode off (TPID 0x8100), IGMP off, MTU 2000, LED mode link+activity, "
               "aging 300s, service 0\n"
               "  HAL index 0, configuration valid\n"
               "PORT  LABEL  ROLE      ENABLED  SPEED  DUPLEX  VLAN  PCP  TAGGING   GROUP  LOCKED"
               "  EEE  MIRROR  DELAY  DVT\n"
               "0:0   -      internal  yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:1   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:2   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:3   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:4   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:5   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  on   -       off    off\n"
               "0:6   -      phy       yes      auto   full       1    0  untagged  -      yes   "
               "  off  -       off    off\n"
               "0:7   -      rgmii     yes      auto   full       1    0  untagged  -      yes   "
               "  off  -       off    off\n"
               "no PHYs\n"));
}

TEST(Board, JsonHoldsTheSameFacts)
{
    const auto r = OnBoard("one_switch", {"ctl init", "ctl show --json"});
    const auto json = Json(r[1]);
    EXPECT_EQ(json["schema"], 2);
    ASSERT_EQ(json["switches"].size(), 1U);
    EXPECT_EQ(json["switches"][0]["board"]["reset_pin"], 18);
    EXPECT_TRUE(json["switches"][0]["board"]["enable_pin"].is_null());
    ASSERT_EQ(json["ports"].size(), 8U);
    EXPECT_TRUE(json["ports"][6]["mirror_to"].is_null());
    EXPECT_EQ(json["ports"][6]["eee"], false);
    EXPECT_EQ(json["phys"], nlohmann::json::array());
    EXPECT_EQ(json["mac_vlans"], nlohmann::json::array());
}

TEST(Board, WithoutDevicesIsEmptyAndNotAFailure)
{
    const auto r = OnBoard("no_devices", {"ctl init >/dev/null", "ctl show", "ctl port",
                                          "ctl switch --json", "ctl up 0", "ctl phy 0"});
    EXPECT_THAT(r[0], Prints(""));
    EXPECT_THAT(r[1], Prints("no switches\nno PHYs\n"));
    EXPECT_THAT(r[2], Prints("no ports\n"));
    EXPECT_EQ(Json(r[3])["switches"], nlohmann::json::array());
    EXPECT_THAT(r[4], Refuses(3, "no switch 0: the board has 0: orblinkctl switch"));
    EXPECT_THAT(r[5], Refuses(3, "no PHY 0: the board has 0: orblinkctl phy"));
}

// A board of PHYs alone, whose data come in this order, or not at all.
std::string PhyBoard(const Scratch& scratch, const std::string& order, const std::string& more = "")
{
    scratch.Write("phys.toml", "mailbox_order = " + order +
                                   "\n[[phy]]\nhal = \"libphyk20.so\"\nchip = \"ieee8023\"\n"
                                   "serdes = 1\nmdio_bus = 0\nmdio_address = 4\n" +
                                   more);
    return scratch.Path("phys.toml");
}

TEST(Board, OfPhysAloneIsInitialisedWithoutKnowingThat)
{
    const Scratch scratch;
    const auto r = OnBoard(PhyBoard(scratch, R"(["phy", "switch"])"),
                           {"ctl init --json", "ctl phy 0 up", "ctl doctor"});
    const auto families = Json(r[0])["families"];
    ASSERT_EQ(families.size(), 2U);
    EXPECT_EQ(families[0]["devices"], 0);
    EXPECT_EQ(families[1]["devices"], 1);
    EXPECT_EQ(r[1].code, 0) << r[1].err;
    EXPECT_EQ(r[2].code, 0) << r[2].out;
}

TEST(Board, WhoseSwitchDataNeverComeHasItsPhysAllTheSame)
{
    const Scratch scratch;
    const auto r = OnBoard(PhyBoard(scratch, R"(["phy"])"), {"ctl --wait 0.3 init --json"});
    const auto families = Json(r[0])["families"];
    ASSERT_EQ(families.size(), 2U);
    EXPECT_EQ(families[0]["failure"],
              "no board data came from the application CPU within 0.3 s; what was made is undone");
    EXPECT_EQ(families[1]["devices"], 1);
}

TEST(Board, TakesTheDataOfItsFamiliesInEitherOrder)
{
    const Scratch scratch;
    const std::string board =
        PhyBoard(scratch, R"(["phy", "switch"])",
                 "[[switch]]\nhal = \"liborblink_velmar.so\"\nchip = \"vswitch\"\nserdes = 0\n"
                 "reset_pin = 18\nmdio_bus = 0\nmdio_address = 16\ninternal_port = 0\n"
                 "internal_mode = \"SGMII\"\ninternal_speed = \"1G\"\n");
    const auto r = OnBoard(board, {"ctl init --json", "ctl up 0"});
    const auto families = Json(r[0])["families"];
    ASSERT_EQ(families.size(), 2U);
    EXPECT_EQ(families[0]["devices"], 1);
    EXPECT_EQ(families[1]["devices"], 1);
    EXPECT_EQ(r[1].code, 0) << r[1].err;
}

TEST(Board, ObjectsThatAreNotThereAreNamed)
{
    const auto r = OnBoardUp("one_switch", {"ctl switch 1", "ctl port 1:2", "ctl mtu 1 1500"});
    for (const auto& outcome : r)
        EXPECT_THAT(outcome, Refuses(3, "no switch 1: the board has 1: orblinkctl switch"));
}

TEST(Board, ServicesAnswer)
{
    const auto r = OnBoard(
        "two_switches", {"ctl init >/dev/null", "ctl board battery", "board battery 3",
                         "ctl board battery", "board battery 0", "ctl board lane-reset 1 --hsgmii",
                         "board journal --kind lane | tail -1", "ctl board pin 19 0",
                         "board journal --kind gpio | tail -1", "ctl board built-in --json",
                         "ctl board --json", "ctl board mac-addresses"});
    EXPECT_THAT(r[1], Prints("battery: 0\n"));
    EXPECT_THAT(r[3], Prints("battery: 3\n"));
    EXPECT_THAT(r[5], Prints("lane 1: reset 2500\n"));
    EXPECT_THAT(r[6].out, HasSubstr("6"));
    EXPECT_THAT(r[7], Prints("pin 19: level 0\n"));
    EXPECT_THAT(r[8].out, HasSubstr("0"));
    EXPECT_EQ(Json(r[9])["board_entries"][0]["internal_port"], 4);
    EXPECT_EQ(Json(r[10])["switches"][1]["reset_pin"], 19);
    EXPECT_TRUE(Json(r[10])["mac_addresses"].is_null());
    EXPECT_THAT(r[11], Refuses(5,
                               "the MAC addresses are known to the program that initialised the "
                               "board, and to nobody after it: 'orblinkctl init' prints them"));
}

// While the application CPU is silent the initialisation waits, and holds the semaphore.
TEST(Board, ABusyFamilyIsReportedInTime)
{
    const auto r =
        OnBoard("one_switch", {"board fault silent --times 0; ctl init --switch >/dev/null & "
                               "until [ -e /dev/shm/obos_orblink_driver ]; do sleep 0.01; done",
                               "ctl --wait 0.05 port", "ctl --wait 0 up 0",
                               "board fault clear; ctl --wait 10 switch 0 service"});
    ASSERT_EQ(r[0].code, 0) << r[0].err;
    for (size_t i = 1; i < 3; ++i) {
        EXPECT_EQ(r[i].code, 7);
        EXPECT_THAT(r[i].err,
                    testing::MatchesRegex("orblinkctl: the switch family is busy: process "
                                          ".* \\(orblinkctl\\) has held the lock since "
                                          ".* s ago\\)\n"));
    }
    EXPECT_THAT(r[3], Prints("SWITCH  SERVICE\n     0        0\n"));
}

// Even root obeys file modes once it has no capabilities.
TEST(Board, MissingPermissionIsNotMissingInitialisation)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    const std::string powerless = "setpriv --bounding-set=-all orblinkctl ";
    const auto r =
        OnBoard("one_switch",
                {"ctl init >/dev/null", "chmod 0 /var/tmp/orblink_sem", powerless + "port",
                 powerless + "show", "chmod 600 /var/tmp/orblink_sem",
                 "chmod 0 /dev/shm/obos_orblink_driver", powerless + "up 0", powerless + "phy"});
    const char* refused =
        "no permission to use the switch family (/var/tmp/orblink_sem): Permission denied";
    EXPECT_THAT(r[2], Refuses(6, refused));
    EXPECT_THAT(r[3], Refuses(6, refused));
    EXPECT_THAT(r[6], Refuses(6,
                              "no permission to use the switch family "
                              "(/dev/shm/obos_orblink_driver): Permission denied"));
    EXPECT_THAT(r[7], Prints("no phys\n"));
}

TEST(Board, AHolderThatLetsGoIsWaitedFor)
{
    const auto r = OnBoard(
        "one_switch",
        {"ctl init >/dev/null", "(ctl up 0 >/dev/null) & ctl --wait 5 switch 0 service; wait"});
    EXPECT_THAT(r[1], Prints("SWITCH  SERVICE\n     0        0\n"));
}

}  // namespace
}  // namespace onboard
