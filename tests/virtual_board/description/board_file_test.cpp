#include "virtual_board/description/board_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vboard {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

BoardFileErrors ErrorsOf(std::string_view text)
{
    auto parsed = ParseBoard(text, "b.toml");
    auto* errors = std::get_if<BoardFileErrors>(&parsed);
    return errors != nullptr ? *errors : BoardFileErrors{};
}

BoardDescription BoardOf(std::string_view text)
{
    auto parsed = ParseBoard(text, "b.toml");
    EXPECT_TRUE(std::holds_alternative<BoardDescription>(parsed)) << ErrorsOf(text)[0];
    return std::holds_alternative<BoardDescription>(parsed) ? std::get<BoardDescription>(parsed)
                                                            : BoardDescription{};
}

constexpr std::string_view kFull = R"(
name = "all"
isolation = true
ulp = true
battery = 2
mdio_buses = 3
reset_lines_at_power_on = "held"
mailbox_order = ["phy", "switch"]
mac_addresses = ["00:00:00:00:00:01", "00:00:00:00:00:02", "00:00:00:00:00:03",
                 "00:00:00:00:00:04", "0a:Bc:00:00:00:ff"]
[[switch]]
hal = "a.so"
chip = "none"
serdes = 1
enable_pin = 5
reset_pin = 19
mdio_bus = 2
mdio_address = 31
internal_port = 7
internal_mode = "RGMII"
internal_speed = "100M"
pre_reset_arg = 4294967295
reserved_word = 9
links_up = [0, 7]
[[phy]]
hal = "p.so"
serdes = 0
mdio_bus = 0
mdio_address = "none"
port_mode = "HSGMII"
port_speed = "2.5G"
identifier = 0x12345678
clause45 = false
lane_good = false
negotiation_ms = 60000
eee = false
modes = ["100half", "1000full"]
partner = { connected = false, autoneg = false, eee = true, modes = ["10half", "2500full"] }
[[fault]]
name = "mdio-error"
value = 6
at = 7
times = 8
)";

TEST(BoardFile, ReadsEveryKey)
{
    BoardDescription spec = BoardOf(kFull);
    EXPECT_EQ(spec.name, "all");
    EXPECT_TRUE(spec.isolation && spec.ulp && spec.resetHeldAtPowerOn);
    EXPECT_EQ(spec.battery, 2U);
    EXPECT_EQ(spec.mdioBuses, 3U);
    EXPECT_THAT(spec.order, ElementsAre(Family::kPhy, Family::kSwitch));
    EXPECT_THAT(spec.macAddresses[4], ElementsAre(0x0a, 0xbc, 0, 0, 0, 0xff));
    const SwitchDescription& sw = spec.switches.at(0);
    EXPECT_EQ(sw.wiring.halLibName, "a.so");
    EXPECT_EQ(sw.wiring.chip, "none");
    EXPECT_EQ(sw.wiring.serdesId, 1U);
    EXPECT_EQ(sw.wiring.enableGpioPin, 5U);
    EXPECT_EQ(sw.wiring.resetGpioPin, 19U);
    EXPECT_EQ(sw.wiring.mdioBus, 2);
    EXPECT_EQ(sw.wiring.mdioAddr, 31);
    EXPECT_EQ(sw.wiring.mode, 4U);
    EXPECT_EQ(sw.wiring.speed, 3U);
    EXPECT_EQ(sw.internalPort, 7U);
    EXPECT_EQ(sw.preResetArg, 0xFFFFFFFF);
    EXPECT_EQ(sw.reservedWord, 9U);
    EXPECT_THAT(sw.linksUp, ElementsAre(0U, 7U));
}

TEST(BoardFile, ReadsPhyAndFault)
{
    BoardDescription spec = BoardOf(kFull);
    const PhyDescription& phy = spec.phys.at(0);
    EXPECT_EQ(phy.wiring.chip, "ieee8023");
    EXPECT_EQ(phy.wiring.resetGpioPin, kNoPin);
    EXPECT_EQ(phy.wiring.mdioAddr, kNoMdio);
    EXPECT_EQ(phy.wiring.mode, 6U);
    EXPECT_EQ(phy.wiring.speed, 5U);
    EXPECT_EQ(phy.identifier, 0x12345678U);
    EXPECT_EQ(phy.negotiationMs, 60000U);
    EXPECT_FALSE(phy.clause45 || phy.laneGood || phy.abilities.eee || phy.abilities.full2500);
    EXPECT_TRUE(phy.abilities.half100 && phy.abilities.full1000);
    EXPECT_FALSE(phy.partner.connected || phy.partner.negotiates || phy.partner.full1000);
    EXPECT_TRUE(phy.partner.eee && phy.partner.half10 && phy.partner.full2500);
    const Fault& fault = spec.faults.at(0);
    EXPECT_EQ(fault.kind->name, "mdio-error");
    EXPECT_EQ(fault.value, 6U);
    EXPECT_EQ(fault.at, 7U);
    EXPECT_EQ(fault.times, 8U);
}

TEST(BoardFile, AnEmptyFileIsABoardWithoutDevices)
{
    BoardDescription spec = BoardOf("");
    EXPECT_THAT(spec.switches, IsEmpty());
    EXPECT_THAT(spec.phys, IsEmpty());
    EXPECT_THAT(spec.order, ElementsAre(Family::kSwitch, Family::kPhy));
}

TEST(BoardFile, ABoardOfPhysAloneSendsTheirDataFirst)
{
    EXPECT_THAT(BoardOf("[[phy]]\nhal = \"p.so\"\nserdes = 0\n").order,
                ElementsAre(Family::kPhy, Family::kSwitch));
}

TEST(BoardFile, ListsEveryMistakeInFileOrder)
{
    EXPECT_THAT(ErrorsOf("battery = true\nfoo = 1\n[[switch]]\nserdes = 2\nhal = \"x\"\n"),
                ElementsAre("b.toml:1:11: battery: expected an integer from 0 to 2147483647",
                            StartsWith("b.toml:2:1: unknown key 'foo': expected one of battery,"),
                            "b.toml:4:10: serdes: expected an integer from 0 to 1"));
}

TEST(BoardFile, ASyntaxErrorHasItsPlace)
{
    EXPECT_THAT(ErrorsOf("name = \"x\"\nbattery = = 1\n"),
                ElementsAre(StartsWith("b.toml:2:11: ")));
}

TEST(BoardFile, AFileThatCannotBeReadIsNamed)
{
    auto loaded = LoadBoardFile("/no/such/board.toml");
    ASSERT_TRUE(std::holds_alternative<BoardFileErrors>(loaded));
    EXPECT_THAT(std::get<BoardFileErrors>(loaded),
                ElementsAre("/no/such/board.toml: cannot be read"));
}

constexpr char kSwitchTable[] = "[[switch]]\nhal = \"x\"\nserdes = 0\n";
constexpr char kPhy[] = "[[phy]]\nhal = \"x\"\nserdes = 0\n";

class BoardFileMistake : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(BoardFileMistake, IsFoundAtItsPlace)
{
    EXPECT_THAT(ErrorsOf(GetParam().first), ElementsAre(StartsWith("b.toml:" + GetParam().second)));
}

INSTANTIATE_TEST_SUITE_P(
    All, BoardFileMistake,
    testing::Values(
        std::pair{"name = 3", "1:8: name: expected a string of 0 to 200 characters"},
        std::pair{"isolation = 1", "1:13: isolation: expected true or false"},
        std::pair{"battery = -1", "1:11: battery: expected an integer from 0"},
        std::pair{"mdio_buses = 9", "1:14: mdio_buses: expected an integer from 1 to 8"},
        std::pair{"reset_lines_at_power_on = \"up\"",
                  "1:27: reset_lines_at_power_on: expected one of \"released\", \"held\""},
        std::pair{"mac_addresses = []", "1:17: mac_addresses: expected five addresses"},
        std::pair{"mac_addresses = 5", "1:17: mac_addresses: expected an array"},
        std::pair{"mailbox_order = [\"modem\"]", "1:18: mailbox_order: expected \"switch\" and"},
        std::pair{"mailbox_order = [\"phy\", \"phy\"]", "1:25: mailbox_order: expected"},
        std::pair{"switch = 3", "1:10: switch: expected tables, each written [[switch]]"},
        std::pair{"[[switch]]\nserdes = 0", "1:1: key 'hal' is missing here"},
        std::pair{"[[switch]]\nhal = \"x\"", "1:1: key 'serdes' is missing here"},
        std::pair{"[[switch]]\nhal = \"\"\nserdes = 0", "2:7: hal: expected a string of 1 to 31"},
        std::pair{"[[switch]]\nhal = \"12345678901234567890123456789012\"\nserdes = 0",
                  "2:7: hal: expected a string of 1 to 31"},
        std::pair{std::string(kSwitchTable) + "chip = \"ieee8023\"",
                  "4:8: chip: expected one of \"vswitch\", \"none\""},
        std::pair{std::string(kSwitchTable) + "reset_pin = 4294967295",
                  "4:13: reset_pin: expected an integer from 0 to 4294967294 or \"none\""},
        std::pair{std::string(kSwitchTable) + "mdio_address = 32",
                  "4:16: mdio_address: expected an integer from 0 to 31 or \"none\""},
        std::pair{std::string(kSwitchTable) + "mdio_bus = 2\nmdio_address = 1",
                  "4:12: mdio_bus: expected a bus below mdio_buses = 2"},
        std::pair{std::string(kSwitchTable) + "internal_mode = \"XAUI\"",
                  "4:17: internal_mode: expected one of \"UNKNOWN\", \"MII\""},
        std::pair{std::string(kSwitchTable) + "internal_speed = 1000",
                  "4:18: internal_speed: expected"},
        std::pair{std::string(kSwitchTable) + "internal_port = 8",
                  "4:17: internal_port: expected an integer from 0 to 7"},
        std::pair{std::string(kSwitchTable) + "links_up = [1, 8]",
                  "4:16: links_up: expected an integer"},
        std::pair{std::string(kSwitchTable) + "links_up = 1", "4:12: links_up: expected an array"},
        std::pair{std::string(kSwitchTable) + "port_mode = \"SGMII\"",
                  "4:1: unknown key 'port_mode'"},
        std::pair{std::string(kSwitchTable) + kSwitchTable + kSwitchTable,
                  "7:1: [[switch]]: expected at most 2 of these"},
        std::pair{std::string(kSwitchTable) + "mdio_bus = 0\nmdio_address = 1\n" + kPhy +
                      "mdio_bus = 0\nmdio_address = 1",
                  "10:16: mdio_address: expected an address that no other device has"},
        std::pair{std::string(kPhy) + "partner = 5", "4:11: partner: expected a table"},
        std::pair{std::string(kPhy) + "partner = { modes = [\"1gig\"] }",
                  "4:22: modes: expected \"10half\""},
        std::pair{std::string(kPhy) + "modes = []", "4:9: modes: expected at least one mode"},
        std::pair{"[[fault]]", "1:1: key 'name' is missing here"},
        std::pair{"[[fault]]\nname = \"rust\"", "2:8: name: expected one of mailbox-down, "},
        std::pair{"[[fault]]\nname = \"silent\"\nvalue = 1",
                  "3:9: value: the fault 'silent' takes no value"},
        std::pair{"[[fault]]\nname = \"mdio-error\"\nvalue = 0",
                  "3:9: value: expected an integer from 1 to 133"},
        std::pair{"[[fault]]\nname = \"mdio-error\"\nat = 0",
                  "3:6: at: expected an integer from 1"}));

TEST(BoardFile, AddressesAreThoseOfStations)
{
    for (const char* wrong : {"00:00:00:00:00:00", "01:00:5e:00:00:01", "ff:ff:ff:ff:ff:ff"}) {
        const std::string good = "\"02:00:00:00:00:01\", ";
        auto parsed =
            ParseBoard("mac_addresses = [" + good + good + good + good + "\"" + wrong + "\"]", "b");
        auto* errors = std::get_if<BoardFileErrors>(&parsed);
        ASSERT_NE(errors, nullptr) << wrong;
        EXPECT_THAT(errors->front(), testing::HasSubstr("expected an address of one station"));
        EXPECT_THAT(errors->front(), testing::StartsWith("b:1:"));
    }
}

TEST(BoardFile, OneThatTheParserWouldChokeOnIsRefusedAtOnce)
{
    std::string deep = "name = \"x\"\na";
    for (int i = 0; i < 30'000; ++i)
        deep += ".a";
    EXPECT_THAT(std::get<BoardFileErrors>(ParseBoard(deep, "b")),
                testing::ElementsAre("b:2:34: expected at most 16 dots in a key"));
    std::string keys;
    for (int i = 0; i < 300'000; ++i)
        keys += "k" + std::to_string(i) + "=1\n";
    EXPECT_THAT(std::get<BoardFileErrors>(ParseBoard(keys, "b")),
                testing::ElementsAre("b:1:1: expected a file of at most 64 KiB"));
    EXPECT_TRUE(std::holds_alternative<BoardDescription>(
        ParseBoard("name = \"a.b.c.d.e.f.g.h.i.j.k.l.m.n.o.p.q\"", "b")));
}

TEST(BoardFile, WhatIsNoRegularFileIsRefused)
{
    const std::string fifo = testing::TempDir() + "board.fifo." + std::to_string(getpid());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {std::string("/"), std::string("/dev/zero"), fifo})
        EXPECT_THAT(std::get<BoardFileErrors>(LoadBoardFile(path)),
                    testing::ElementsAre(path + ": is no regular file"));
    unlink(fifo.c_str());
    EXPECT_THAT(std::get<BoardFileErrors>(LoadBoardFile("/no/such/board")),
                testing::ElementsAre("/no/such/board: cannot be read"));
}

TEST(Mac, IsSixHexadecimalBytes)
{
    MacAddress mac{};
    EXPECT_TRUE(ParseMac("01:23:45:67:89:aB", mac));
    EXPECT_EQ(FormatMac(mac), "01:23:45:67:89:ab");
    for (const char* wrong : {"", "01:23:45:67:89", "01:23:45:67:89:ab:", "1:23:45:67:89:abc",
                              "01-23-45-67-89-ab", "0x:23:45:67:89:ab", "+1:23:45:67:89:ab"})
        EXPECT_FALSE(ParseMac(wrong, mac)) << wrong;
}

}  // namespace
}  // namespace vboard
