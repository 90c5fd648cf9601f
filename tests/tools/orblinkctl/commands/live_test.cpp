// Pictures, live views, measured values and the support bundle.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kPicture[] =
    "+-----+                 +----------------------------------------------------+\n"
    "| SoC |  lane 0         |switch 0: enabled                                   |\n"
    "|     |-----------------|mtu 2000, aging 300s, IGMP off, bridging off        |\n"
    "|     |  hsgmii 2500    |+-----------++-----------++-----------++-----------+|\n"
    "|     |                 ||0 internal ||1 phy      ||2 lan2     ||3 phy      ||\n"
    "|     |                 ||down       ||up 1000 FD ||up 1000 FD ||disabled   ||\n"
    "|     |                 ||           ||vlan 1     ||vlan 100   ||vlan 1     ||\n"
    "|     |                 ||eee        ||eee >5     ||eee dvt    ||eee        ||\n"
    "|     |                 |+-----------++-----------++-----------++-----------+|\n"
    "|     |                 |+-----------++-----------++-----------++-----------+|\n"
    "|     |                 ||4 phy      ||5 phy      ||6 phy      ||7 rgmii    ||\n"
    "|     |                 ||down       ||down       ||down       ||down       ||\n"
    "|     |                 ||vlan 1     ||vlan 1     ||vlan 1     ||vlan 1     ||\n"
    "|     |                 ||eee        ||eee        ||           ||           ||\n"
    "|     |                 |+-----------++-----------++-----------++-----------+|\n"
    "+-----+                 +----------------------------------------------------+\n";

TEST(Picture, ShowsEveryPortAsItIs)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '[port]\\nlan2 = \"0:2\"\\n' >n; ctl port 3 disable; ctl port 1 mirror 5; "
         "ctl port 2 vlan 100; ctl port 2 dvt 4",
         "LC_ALL=C ctl --names n", "LC_ALL=C.UTF-8 ctl --names n | head -1",
         "LC_ALL=C ctl --names n --color always | sed -n 6p",
         "LC_ALL=C ctl --color auto | grep -c '\033'; true"});
    EXPECT_THAT(r[1], Prints(kPicture));
    EXPECT_THAT(r[2], Prints("┌─────┐                 ┌────────────────────────────────────────"
                             "────────────┐\n"));
    EXPECT_THAT(r[3].out, HasSubstr("\033[0m\033[32mup 1000 FD\033[0m"));
    EXPECT_THAT(r[3].out, HasSubstr("\033[0m\033[33mup 1000 FD\033[0m"));
    EXPECT_THAT(r[3].out, HasSubstr("\033[0m\033[2mdisabled\033[0m"));
    EXPECT_THAT(r[4], Prints("0\n"));
}

TEST(Picture, IsRenderedFromSvg)
{
    const auto r = OnBoardUp("one_switch",
                             {"ctl --svg board.svg", "rsvg-convert board.svg -o board.png",
                              "head -c 4 board.png | tail -c 3",
                              "grep -c '<rect' board.svg; grep -o '>up 1000 FD<' board.svg | wc -l",
                              "ctl --svg /nowhere/board.svg"});
    EXPECT_THAT(r[0], Prints(""));
    EXPECT_THAT(r[1], Prints(""));
    EXPECT_THAT(r[2], Prints("PNG"));
    // The background, the SoC, the switch and its eight ports.
    EXPECT_THAT(r[3].out, StartsWith("11\n"));
    EXPECT_THAT(r[4], Refuses(1, "/nowhere/board.svg: No such file or directory"));
}

TEST(Picture, OfABoardWithoutDevices)
{
    const auto r = OnBoard("no_devices", {"ctl init >/dev/null", "LC_ALL=C ctl"});
    EXPECT_THAT(r[1], Prints("+-----+\n| SoC |\n+-----+\n"));
}

TEST(Monitor, PrintsTheStateAndThenEveryChange)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl monitor --json --interval 0.05 --rounds 60 >log & sleep 0.5; "
                       "board link sw0:1 down; board battery 1; "
                       "board learn sw0:2 00:00:5e:00:53:01; ctl port 3 vlan 9; wait; cat log",
                       "ctl monitor --rounds 1 | grep 'port 0:1'"});
    std::istringstream lines(r[0].out.substr(r[0].out.find("{")));
    uint64_t sequence = 0;
    std::vector<std::string> changes;
    for (std::string text; std::getline(lines, text);) {
        const auto line = nlohmann::json::parse(text, nullptr, false);
        if (line.is_discarded())
            continue;
        EXPECT_EQ(line["schema"], 2);
        EXPECT_EQ(line["sequence"], ++sequence);
        const unsigned flaps = line.value("flaps", 0U);
        changes.push_back(line["object"].get<std::string>() + " " +
                          line["setting"].get<std::string>() + " " + line["value"].dump() +
                          (flaps == 0 ? "" : " flap " + std::to_string(flaps)));
    }
    using testing::Contains;
    EXPECT_THAT(changes, Contains("port 0:1 link true"));
    EXPECT_THAT(changes, Contains("port 0:1 link false flap 1"));
    EXPECT_THAT(changes, Contains("port 0:1 link_speed null"));
    EXPECT_THAT(changes, Contains("board battery 1"));
    EXPECT_THAT(changes, Contains("switch 0 mac 00:00:5e:00:53:01 vlan 1 \"port 2\""));
    EXPECT_THAT(changes, Contains("port 0:3 vlan 9"));
    EXPECT_THAT(r[1].out, testing::ContainsRegex("T[0-9:.]+Z  [0-9]+  port 0:1: link no\n"));
}

TEST(Top, ShowsRatesBetweenTwoSamples)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"(sleep 0.2; board counter sw0:1 etherStatsOctets 100000) & ctl top --interval 0.6 --json",
         "ctl top --interval 0.01 | head -2"});
    const auto ports = Json(r[0])["ports"];
    ASSERT_EQ(ports.size(), 8U);
    EXPECT_GT(ports[1]["receive_bytes_per_second"], 5000);
    EXPECT_LE(ports[1]["receive_bytes_per_second"], 170000);
    EXPECT_EQ(ports[2]["receive_bytes_per_second"], 0);
    EXPECT_THAT(r[1].out, StartsWith("PORT  LABEL  LINK  SPEED  RX BYTES/S"));
}

// The link goes between two looks.
TEST(Top, CountsFlaps)
{
    const auto r = OnBoardUp("one_switch",
                             {"(sleep 0.5; board link sw0:1 down) & ctl top --interval 2 --json; "
                              "wait"});
    const auto ports = Json(r[0])["ports"];
    EXPECT_EQ(ports[1]["flaps"], 1);
    EXPECT_TRUE(ports[1]["last_change"].is_string());
    EXPECT_EQ(ports[2]["flaps"], 0);
    EXPECT_TRUE(ports[2]["last_change"].is_null());
}

TEST(Watch, ShowsWhatOnePortCounts)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"(sleep 0.3; board counter sw0:1 etherStatsOctets 100000; board link sw0:1 down) & "
         "ctl watch 0:1 --interval 2 --json; wait",
         "ctl watch 0:1 --interval 0.01", "ctl watch 0:9", "ctl watch 1:1"});
    const auto ports = Json(r[0])["ports"];
    ASSERT_EQ(ports.size(), 1U);
    EXPECT_EQ(ports[0]["port"], 1);
    EXPECT_EQ(ports[0]["flaps"], 1);
    EXPECT_EQ(ports[0]["counters"]["etherStatsOctets"], 100000);
    EXPECT_GT(ports[0]["counters_per_second"]["etherStatsOctets"], 1000);
    EXPECT_EQ(ports[0]["counters_per_second"]["etherStatsPkts"], 0);
    EXPECT_THAT(r[1].out, testing::MatchesRegex("port 0:1: link no, flaps 0\n"
                                                "COUNTER +VALUE  PER SECOND\n"
                                                "etherStatsOctets +100000 +0\n"));
    EXPECT_EQ(r[2].code, 3);
    EXPECT_EQ(r[3].code, 3);
}

TEST(Top, GivesTheTerminalBack)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"(sleep 0.5; printf s; sleep 0.5; printf q) | "
                   "script -qec 'orblinkctl top --interval 0.1; echo ended $?; stty -a' /dev/null",
                   "script -qec 'orblinkctl top --interval 0.1 & sleep 2000; kill $!; wait $!; "
                   "echo ended $?' /dev/null"});
    for (const auto& outcome : r) {
        EXPECT_THAT(outcome.out, HasSubstr("\033[?1049h\033[?25l")) << outcome.out;
        EXPECT_THAT(outcome.out, HasSubstr("\033[?25h\033[?1049l")) << outcome.out;
        EXPECT_THAT(outcome.out, HasSubstr("ended 0")) << outcome.out;
    }
    EXPECT_THAT(r[0].out, HasSubstr("sorted by received"));
    EXPECT_THAT(r[0].out, HasSubstr(" icanon "));
    EXPECT_THAT(r[0].out, HasSubstr(" echo "));
}

TEST(Metrics, HaveNamesTypesAndUnits)
{
    const auto r =
        OnBoardUp("one_switch", {"board counter sw0:1 aFramesReceivedOK 42; ctl metrics",
                                 "ctl metrics --textfile m.prom && cat m.prom && ls m.*"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_THAT(r[0].out,
                HasSubstr("# TYPE orblink_port_link_up gauge\n"
                          "orblink_port_link_up{switch=\"0\",port=\"0\",label=\"\"} 0\n"
                          "orblink_port_link_up{switch=\"0\",port=\"1\",label=\"\"} 1\n"));
    EXPECT_THAT(r[0].out, HasSubstr("orblink_port_speed_bits_per_second{switch=\"0\",port=\"1\","
                                    "label=\"\"} 1000000000\n"));
    EXPECT_THAT(r[0].out, HasSubstr("# TYPE orblink_port_a_frames_received_ok_total counter\n"));
    EXPECT_THAT(r[0].out, HasSubstr("orblink_port_a_frames_received_ok_total{switch=\"0\","
                                    "port=\"1\",label=\"\"} 42\n"));
    EXPECT_THAT(r[0].out, Not(HasSubstr("speed_bits_per_second{switch=\"0\",port=\"4\"")));
    EXPECT_THAT(r[1].out, StartsWith("# HELP orblink_initialised "));
    EXPECT_THAT(r[1].out, testing::EndsWith("\nm.prom\n"));
}

TEST(Metrics, OneFailingPortDoesNotHideTheOthers)
{
    const auto r = OnBoardUp("one_switch", {"board fault mdio-error --at 2; ctl metrics"});
    EXPECT_EQ(r[0].code, 1);
    EXPECT_THAT(r[0].out, HasSubstr("orblink_port_scrape_error{switch=\"0\",port=\"0\","
                                    "label=\"\"} 1\n"));
    EXPECT_THAT(r[0].out, HasSubstr("orblink_port_scrape_error{switch=\"0\",port=\"1\","
                                    "label=\"\"} 0\n"));
    EXPECT_THAT(r[0].out,
                HasSubstr("orblink_port_link_up{switch=\"0\",port=\"1\",label=\"\"} 1\n"));
}

TEST(Log, LevelsAndLinesOfOtherProcesses)
{
    const auto r = OnBoard(
        "no_devices",
        {"ctl log -o kv | grep -c severity",
         "echo 'host app: ORBLINK_EnablePort:80 before' >log; orblinkctl log follow log >seen & "
         "f=$!; "
         "sleep 1.5; echo 'host app: ORBLINK_EnablePort:80 Invalid PhyPortIdx=9, DevIdx=0' >>log; "
         "echo 'host kernel: link is up' >>log; printf 'host app: ParseBsd:48 Bad' >>log; "
         "sleep 0.3; echo ' message' >>log; sleep 0.4; kill $f; wait $f; echo $?; cat seen",
         "ctl log follow absent"});
    EXPECT_THAT(r[0], Prints("4\n"));
    EXPECT_THAT(r[1], Prints("0\nhost app: ORBLINK_EnablePort:80 Invalid PhyPortIdx=9, DevIdx=0\n"
                             "host app: ParseBsd:48 Bad message\n"));
    EXPECT_THAT(r[2], Refuses(1, "absent: No such file or directory"));
}

TEST(Bundle, HoldsEverythingAndNoAddressWhenAskedSo)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"ctl aging 0 5; board learn sw0:2 00:00:5e:00:53:aa; ctl mac-vlan add 0:3 "
                   "00:00:5e:00:53:bb 7; "
                   "ctl bundle b.tar.gz | head -1",
                   "tar tzf b.tar.gz", "tar xzOf b.tar.gz orblink/mac-table.json | grep -c 53:aa",
                   "tar xzOf b.tar.gz orblink/switch-region.bin | wc -c",
                   "tar xzOf b.tar.gz orblink/library.log | grep -c trace: >/dev/null",
                   "ctl bundle a.tar.gz --anonymise >/dev/null; mkdir a; tar xzf a.tar.gz -C a",
                   "grep -riE '([0-9a-f]{2}:){5}[0-9a-f]{2}' a; grep -rlaP "
                   "'\\x00\\x00\\x5e\\x00\\x53' a; true",
                   "grep -o address-1 a/orblink/mac-table.json", "ctl bundle /nowhere/b.tar.gz"});
    EXPECT_EQ(r[1].out,
              "orblink/versions.txt\norblink/board.json\norblink/configuration.json\n"
              "orblink/switch-region.bin\norblink/counters.json\n"
              "orblink/mac-table.json\norblink/switch-registers.json\n"
              "orblink/port-registers.json\n"
              "orblink/phy-region.bin\norblink/phy-registers.json\n"
              "orblink/library.log\n");
    EXPECT_THAT(r[2], Prints("1\n"));
    EXPECT_THAT(r[3], Prints("5740\n"));
    EXPECT_THAT(r[4], Succeeds());
    EXPECT_THAT(r[6], Prints(""));
    EXPECT_THAT(r[8], Refuses(1, "/nowhere/b.tar.gz: No such file or directory"));
}

// What a port does not have is null and keeps nothing else out.
TEST(Bundle, HoldsTheRegistersOfEveryPort)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl port 3 vlan 77 >/dev/null; ctl bundle b.tar.gz >/dev/null",
                                 "tar xzOf b.tar.gz orblink/port-registers.json", "ctl reg 0 3 3"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_THAT(r[2], Prints("0x0003: 0x004d\n"));
    const auto registers = Json(r[1])["registers"];
    ASSERT_EQ(registers.size(), 8U * 29);
    const auto value = [&](size_t port, size_t reg) {
        const auto& entry = registers[port * 29 + reg];
        EXPECT_EQ(entry["object"], "switch 0 port " + std::to_string(port));
        EXPECT_EQ(entry["register"], reg);
        return entry["value"];
    };
    EXPECT_EQ(value(3, 3), 77);
    for (size_t port = 0; port < 8; ++port) {
        EXPECT_FALSE(value(port, 0).is_null());
        EXPECT_TRUE(value(port, 0x0A).is_null());
        EXPECT_EQ(value(port, 0x10).is_null(), port == 0 || port == 7);
        EXPECT_EQ(value(port, 0x18).is_null(), port != 7);
        EXPECT_EQ(value(port, 0x1C).is_null(), port != 0);
    }
}

}  // namespace
}  // namespace onboard
