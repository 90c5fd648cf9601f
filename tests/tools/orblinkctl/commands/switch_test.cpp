// Commands on whole switches, the MAC tables and raw access.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Switch, GoesUpAndDown)
{
    const auto r =
        OnBoard("two_switches", {"ctl init >/dev/null", "ctl up 0", "ctl switch 1 up --defaults",
                                 "ctl up 0", "ctl down 0", "ctl switch 1 reset --restore",
                                 "ctl switch 1 up --vendor-params 0100000000000000",
                                 "ctl switch -o kv | grep state", "ctl up 0 --defaults --restore"});
    EXPECT_THAT(r[1], Prints("switch 0: state enabled\n"));
    EXPECT_THAT(r[2], Prints("switch 1: state enabled\n"));
    EXPECT_THAT(r[3], Prints("switch 0: state enabled\n"));
    EXPECT_THAT(r[4], Prints("switch 0: state in reset\n"));
    EXPECT_THAT(r[5], Prints("switch 1: state enabled\n"));
    EXPECT_THAT(r[6], Prints("switch 1: state enabled\n"));
    EXPECT_THAT(r[7], Prints("switches.0.state=\"in reset\"\nswitches.1.state=enabled\n"));
    EXPECT_THAT(r[8], Refuses(2, "--defaults and --restore exclude each other"));
}

TEST(Switch, DefaultsReplaceTheConfiguration)
{
    const auto r = OnBoardUp("one_switch", {"ctl port 2 vlan 100", "ctl mtu 0 1600", "ctl down 0",
                                            "ctl up 0 --defaults", "ctl reg 0 2 3", "ctl mtu 0"});
    EXPECT_THAT(r[1], Prints("switch 0: mtu 1600\n"));
    EXPECT_THAT(r[4], Prints("0x0003: 0x0001\n"));
    EXPECT_THAT(r[5], Prints("SWITCH   MTU\n     0  2000\n"));
}

TEST(Switch, BatteryKeepsItInReset)
{
    const auto r = OnBoard(
        "one_switch", {"ctl init >/dev/null; board battery 1", "ctl up 0", "ctl switch 0 config"});
    EXPECT_THAT(r[1], Refuses(1,
                              "switch 0 was not brought up: the modem runs on battery: again on "
                              "mains power, orblinkctl board shows it"));
    EXPECT_THAT(r[2], Refuses(1,
                              "switch 0: the configuration could not be read: the modem runs on "
                              "battery: again on mains power, orblinkctl board shows it"));
}

TEST(Switch, TellsWhatItIs)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl switch 0 caps --json", "ctl switch 0 config --json",
                       "ctl switch 0 isolation", "ctl switch 0 service 5", "ctl switch 0 service",
                       "ctl switch 0 machine-state", "ctl switch 0"});
    const auto caps = Json(r[0])["capabilities"][0];
    EXPECT_EQ(caps["ports"], 8);
    EXPECT_EQ(caps["eee"], true);
    EXPECT_EQ(caps["snooping"], true);
    EXPECT_EQ(caps["port_capabilities"].size(), 8U);
    EXPECT_EQ(Json(r[1])["ports"].size(), 8U);
    EXPECT_EQ(Json(r[1])["switches"][0]["state"], "enabled");
    EXPECT_THAT(r[2], Prints("SWITCH  PORT ISOLATION\n     0  yes\n"));
    EXPECT_THAT(r[3], Prints("switch 0: service 5\n"));
    EXPECT_THAT(r[4], Prints("SWITCH  SERVICE\n     0        5\n"));
    EXPECT_THAT(r[5], Succeeds());
    EXPECT_THAT(r[5].out, HasSubstr("switch 0"));
    EXPECT_THAT(r[6].out, StartsWith("switch: 0\nstate: enabled\nports: 8\n"));
}

TEST(Switch, WideSettings)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl igmp 0 on", "ctl igmp", "ctl led 0 5", "ctl led", "ctl aging 0 1",
                       "ctl smi 0 0x113", "ctl aging", "ctl bridge-mode 0 on", "ctl bridge-mode",
                       "ctl smi 0 0x111-0x112", "ctl bridge-mode 0 off", "ctl mtu 0 40"});
    EXPECT_THAT(r[0], Prints("switch 0: igmp on\n"));
    EXPECT_THAT(r[1], Prints("SWITCH  IGMP\n     0  on\n"));
    EXPECT_THAT(r[2], Prints("switch 0: led duplex+collision\n"));
    EXPECT_THAT(r[3], Prints("SWITCH  LED               LED ON CHIP\n"
                             "     0  duplex+collision  duplex+collision\n"));
    EXPECT_THAT(r[4], Prints("switch 0: aging 15s\n"));
    EXPECT_THAT(r[5], Prints("0x0113: 0x0001\n"));
    EXPECT_THAT(r[6], Prints("SWITCH  AGING\n     0  15s\n"));
    EXPECT_THAT(r[7], Prints("switch 0: bridge-mode provider\nswitch 0: tpid 0x88a8\n"));
    EXPECT_THAT(r[8], Prints("SWITCH  BRIDGE MODE  BRIDGE TPID\n     0  provider     0x88a8\n"));
    EXPECT_THAT(r[9], Prints("0x0111: 0x0001\n0x0112: 0x88a8\n"));
    EXPECT_THAT(r[10], Prints("switch 0: bridge-mode off\n"));
    EXPECT_THAT(r[11], Refuses(5, "mtu 40 is not offered by switch 0 (64 to 10240 octets)"));
}

TEST(Switch, Qos)
{
    const auto r = OnBoardUp("one_switch",
                             {"ctl qos 0 wred 9 10 20 30 40 50 60", "ctl smi 0 0x2048-0x204d",
                              "ctl qos 0 global-wred 1 4 50 1 2 3 4 5 6", "ctl smi 0 0x120-0x122",
                              "ctl qos 0 reserve 9 12", "ctl smi 0 0x204e",
                              "ctl qos flow-control 0:1 200 100", "ctl reg 0 1 8-9"});
    EXPECT_THAT(r[0], Prints("switch 0: wred of queue 9 10 20 30 40 50 60\n"));
    EXPECT_THAT(r[1], Prints("0x2048: 0x000a\n0x2049: 0x0014\n0x204a: 0x001e\n0x204b: 0x0028\n"
                             "0x204c: 0x0032\n0x204d: 0x003c\n"));
    EXPECT_THAT(r[2], Prints("switch 0: global wred 1 4 50 1 2 3 4 5 6\n"));
    EXPECT_THAT(r[3], Prints("0x0120: 0x3241\n0x0121: 0x0001\n0x0122: 0x0002\n"));
    EXPECT_THAT(r[4], Prints("switch 0: reservation of queue 9 12\n"));
    EXPECT_THAT(r[5], Prints("0x204e: 0x000c\n"));
    EXPECT_THAT(r[6], Prints("port 0:1: flow control 200 100\n"));
    EXPECT_THAT(r[7], Prints("0x0008: 0x00c8\n0x0009: 0x0064\n"));
}

// Board time runs a thousand times faster: the slowest ageing leaves the test 4.8 seconds.
TEST(Switch, MacTable)
{
    const auto r = OnBoardUp(
        "two_switches",
        {"ctl aging 0 5; ctl aging 1 5; "
         "board learn sw0:1 00:00:5e:00:53:01; board learn sw0:2 00:00:5e:00:53:02; "
         "board learn sw1:1 00:00:5e:00:54:03",
         "ctl mac -o kv | grep -v age", "ctl mac 0 --count", "ctl mac --port 0:2 -o kv | grep mac",
         "ctl mac --prefix 00:00:5E:00:54 --count", "ctl mac --vlan 7", "ctl mac 1 table --json",
         "ctl mac --vlan 7 --json", "ctl mac --port 1:9", "ctl down 1 && ctl mac --count"});
    EXPECT_THAT(r[1], Prints("schema=2\n"
                             "entries.0.switch=0\nentries.0.port=1\n"
                             "entries.0.mac=00:00:5e:00:53:01\nentries.0.vlan=1\n"
                             "entries.0.static=false\n"
                             "entries.1.switch=0\nentries.1.port=2\n"
                             "entries.1.mac=00:00:5e:00:53:02\nentries.1.vlan=1\n"
                             "entries.1.static=false\n"
                             "entries.2.switch=1\nentries.2.port=1\n"
                             "entries.2.mac=00:00:5e:00:54:03\nentries.2.vlan=1\n"
                             "entries.2.static=false\n"));
    EXPECT_THAT(r[2], Prints("count: 2\n"));
    EXPECT_THAT(r[3], Prints("entries.0.mac=00:00:5e:00:53:02\n"));
    EXPECT_THAT(r[4], Prints("count: 1\n"));
    EXPECT_THAT(r[5], Prints("no entries\n"));
    EXPECT_EQ(Json(r[6])["entries"].size(), 1U);
    EXPECT_EQ(Json(r[6])["more"], false);
    EXPECT_EQ(Json(r[7])["entries"], nlohmann::json::array());
    EXPECT_EQ(r[8].code, 2);
    EXPECT_THAT(r[9], Prints("switch 1: state in reset\ncount: 2\n"));
}

TEST(Switch, MacVlanTable)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl mac-vlan", "ctl mac-vlan add 0:3 00:00:5e:00:53:09 55",
                       "ctl mac-vlan add 0:3 00:00:5e:00:53:09 56 --mask 0xff0", "ctl mac-vlan",
                       "ctl smi 0 0x400-0x402", "ctl mac-vlan remove 0:3 00:00:5e:00:53:09",
                       "ctl mac-vlan 0 --json"});
    EXPECT_THAT(r[0], Prints("no mac_vlans\n"));
    EXPECT_THAT(r[1], Prints("port 0:3: mac-vlan 00:00:5e:00:53:09 55\n"));
    EXPECT_THAT(r[3], Prints("SWITCH  PORT  MAC                MASK   VLAN\n"
                             "     0     3  00:00:5e:00:53:09  0xfff    55\n"
                             "     0     3  00:00:5e:00:ff:ff  0xff0    56\n"));
    EXPECT_THAT(r[4], Prints("0x0400: 0x8003\n0x0401: 0x0037\n0x0402: 0x0fff\n"));
    EXPECT_THAT(r[5], Prints("port 0:3: mac-vlan 00:00:5e:00:53:09 removed\n"));
    EXPECT_EQ(Json(r[6])["mac_vlans"].size(), 1U);
}

TEST(Switch, RawAccess)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"ctl reg 0 2 3 0x22", "ctl reg 0 2 3", "ctl smi 0 0x113 4/7", "ctl smi 0 0x120 0x1/0x1",
         "ctl smi 0 0x120", "ctl reg 0 2 0x30",
         "board learn sw0:1 00:00:5e:00:53:01; ctl ioctl 0 16; ctl mac --count",
         "ctl ioctl 0 17 00005e0053020a0003", "ctl mac -o kv | grep -c .mac=", "ctl ioctl 0 -5"});
    EXPECT_THAT(r[0], Prints("switch 0 port 2: register 0x0003 0x0022\n"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0022\n"));
    EXPECT_THAT(r[2], Prints("switch 0: register 0x0113 0x0004\n"));
    EXPECT_THAT(r[3], Prints("switch 0: register 0x0120 0x6441\n"));
    EXPECT_THAT(r[4], Prints("0x0120: 0x6441\n"));
    EXPECT_THAT(r[5],
                Refuses(1,
                        "switch 0 port 2 register 0x0030 could not be read: MDIO bus 0 address 16: "
                        "Input/output error: orblinkctl doctor"));
    EXPECT_THAT(r[6], Prints("switch 0: ioctl 16 -\ncount: 0\n"));
    EXPECT_EQ(r[7].code, 0) << r[7].err;
    EXPECT_THAT(r[8], Prints("1\n"));
    EXPECT_THAT(
        r[9], Refuses(1,
                      "switch 0: the chip's own command was refused: the chip or its HAL refused: "
                      "again with -v shows the log"));
}

TEST(Switch, TheBareWordsListWhatCanBeAddressed)
{
    const auto r = OnBoard("two_switches", {"ctl init >/dev/null; ctl up 0 >/dev/null", "ctl reg",
                                            "ctl smi", "ctl reg --json", "ctl smi --json"});
    EXPECT_THAT(r[1], Prints("SWITCH  STATE             HAL                   PORT NUMBERS\n"
                             "     0  enabled           liborblink_velmar.so  0 1 2 3 4 5 6 7\n"
                             "     1  never brought up  liborblink_velmar.so  0 1 2 3 4 5 6 7\n"));
    EXPECT_THAT(r[2], Prints("SWITCH  STATE             HAL                   MDIO BUS  "
                             "MDIO ADDRESS\n"
                             "     0  enabled           liborblink_velmar.so         0  "
                             "          16\n"
                             "     1  never brought up  liborblink_velmar.so         1  "
                             "          16\n"));
    EXPECT_EQ(Json(r[3])["switches"][1]["port_numbers"].size(), 8U);
    EXPECT_EQ(Json(r[4])["switches"][1]["mdio_bus"], 1);
}

// What the usage says must be what the chip takes.
TEST(Switch, UsageTellsTheMeaningOfTheValues)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl ioctl", "ctl qos", "ctl ioctl 0 17 00005e0053010a000300",
                       "ctl mac -o kv | grep -E 'port|vlan'", "ctl ioctl 0 18 00005e0053010a000000",
                       "ctl mac --count", "ctl ioctl 0 3", "ctl qos 0 reserve 63 63",
                       "ctl qos 0 reserve 64 63", "ctl qos 0 reserve 63 64",
                       "ctl qos flow-control 1 4095 4095", "ctl qos flow-control 1 4094 4095"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_THAT(r[0].out, HasSubstr("orblinkctl ioctl SWITCH COMMAND-NUMBER [PARAMETER]\n"
                                    "    a command of the switch's HAL\n"
                                    "switch 0, HAL liborblink_velmar.so:\n    3  "));
    for (const char* line : {"    8  ", "    16  ", "    17  ", "    18  "})
        EXPECT_THAT(r[0].out, HasSubstr(line));
    EXPECT_THAT(r[1], Succeeds());
    EXPECT_THAT(r[1].out, HasSubstr("    QUEUE                  0 to 63: "));
    EXPECT_THAT(r[1].out, HasSubstr("    BUFFERS                0 to 63\n"));
    EXPECT_EQ(r[2].code, 0) << r[2].err;
    EXPECT_THAT(r[3], Prints("entries.0.port=3\nentries.0.vlan=10\n"));
    EXPECT_EQ(r[4].code, 0) << r[4].err;
    EXPECT_THAT(r[5], Prints("count: 0\n"));
    for (const size_t good : {6, 7, 10})
        EXPECT_EQ(r[good].code, 0) << r[good].command << r[good].err;
    for (const size_t beyond : {8, 9})
        EXPECT_EQ(r[beyond].code, 5) << r[beyond].command;
    EXPECT_EQ(r[11].code, 1) << r[11].command;
}

// The chip is not known before its capabilities are.
TEST(Switch, UsageIsThereForAChipThatIsNotKnown)
{
    const auto r = OnBoard("one_switch", {"ctl qos --json", "ctl init --no-defaults >/dev/null",
                                          "ctl qos --json", "ctl ioctl", "ctl reg --json"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_EQ(Json(r[0])["commands"].size(), 4U);
    EXPECT_TRUE(Json(r[0])["switches"].is_null());
    EXPECT_EQ(Json(r[2])["commands"].size(), 4U);
    ASSERT_EQ(Json(r[2])["switches"].size(), 1U);
    EXPECT_TRUE(Json(r[2])["switches"][0]["values"].is_null());
    EXPECT_THAT(r[3], Prints("orblinkctl ioctl SWITCH COMMAND-NUMBER [PARAMETER]\n"
                             "    a command of the switch's HAL\n"
                             "switch 0, HAL liborblink_velmar.so: the meaning of the values is not "
                             "known\n"));
    EXPECT_TRUE(Json(r[4])["switches"][0]["port_numbers"].is_null());
}

}  // namespace
}  // namespace onboard
