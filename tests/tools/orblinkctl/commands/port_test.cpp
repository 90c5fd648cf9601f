// Port, VLAN and switch-wide commands, each with what the chip has afterwards.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Port, SettingsReachTheChip)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"ctl port 0:2 vlan 100", "ctl reg 0 2 3", "ctl port 2 pcp 5", "ctl reg 0 2 4",
                   "ctl port 2 tagging 1", "ctl reg 0 2 5", "ctl port 2 group 7 --unlock",
                   "ctl reg 0 2 6", "ctl port 2 mirror 3", "ctl reg 0 2 7", "ctl port 2 vlan"});
    EXPECT_THAT(r[0], Prints("port 0:2: vlan 100\n"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0064\n"));
    EXPECT_THAT(r[2], Prints("port 0:2: pcp 5\n"));
    EXPECT_THAT(r[3], Prints("0x0004: 0x0005\n"));
    EXPECT_THAT(r[4], Prints("port 0:2: tagging tagged\n"));
    EXPECT_THAT(r[5], Prints("0x0005: 0x0001\n"));
    EXPECT_THAT(r[6], Prints("port 0:2: group 7\n"));
    EXPECT_THAT(r[7], Prints("0x0006: 0x8007\n"));
    EXPECT_THAT(r[8], Prints("port 0:2: mirror 3\n"));
    EXPECT_THAT(r[9], Prints("0x0007: 0x8003\n"));
    EXPECT_THAT(r[10], Prints("SWITCH  PORT  LABEL  ROLE  VLAN  PCP  TAGGING  GROUP  GROUP LOCKED\n"
                              "     0     2  -      phy    100    5  tagged       7  off\n"));
}

TEST(Port, MoreSettingsReachTheChip)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"ctl port 1 speed 100 half", "ctl reg 0 1 0x10", "ctl port 1 duplex full",
         "ctl reg 0 1 0x10", "ctl port 1 speed auto", "ctl port 1 speed", "ctl port 1 eee off",
         "ctl port 1 eee", "ctl port 1 eee on", "ctl port 7 delay on", "ctl reg 0 7 0x18",
         "ctl port 1 test-mode 2", "ctl port 1 test-mode", "ctl port 1 dvt 3", "ctl port 1 dvt",
         "ctl port 1 dvt off", "ctl reg 0 1 0x13", "ctl port 1 mirror off"});
    EXPECT_THAT(r[0], Prints("port 0:1: speed 100\nport 0:1: duplex half\n"));
    EXPECT_THAT(r[1], Prints("0x0010: 0x0003\n"));
    EXPECT_THAT(r[2], Prints("port 0:1: speed 100\nport 0:1: duplex full\n"));
    EXPECT_THAT(r[3], Prints("0x0010: 0x000b\n"));
    EXPECT_THAT(r[4], Prints("port 0:1: speed auto\nport 0:1: duplex full\n"));
    EXPECT_THAT(r[5], Prints("SWITCH  PORT  SPEED  DUPLEX\n     0     1  auto   full\n"));
    EXPECT_THAT(r[6], Prints("port 0:1: eee off\n"));
    EXPECT_THAT(r[7], Prints("SWITCH  PORT  EEE  EEE ON CHIP\n     0     1  off  off\n"));
    EXPECT_THAT(r[8], Prints("port 0:1: eee on\n"));
    EXPECT_THAT(r[9], Prints("port 0:7: delay on\n"));
    EXPECT_THAT(r[10], Prints("0x0018: 0x0001\n"));
    EXPECT_THAT(r[11], Prints("port 0:1: test-mode jitter-master\n"));
    EXPECT_THAT(r[12], Prints("SWITCH  PORT  TEST MODE\n     0     1  jitter-master\n"));
    EXPECT_THAT(r[13], Prints("port 0:1: dvt packets\n"));
    EXPECT_THAT(r[14], Prints("SWITCH  PORT  DVT\n     0     1  on\n"));
    EXPECT_THAT(r[15], Prints("port 0:1: dvt off\n"));
    EXPECT_THAT(r[16], Prints("0x0013: 0x0000\n"));
    EXPECT_THAT(r[17], Prints("port 0:1: mirror off\n"));
}

TEST(Port, EnableAndDisable)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl port 0:2 disable", "ctl reg 0 2 1", "ctl port 0:2 enabled",
                                 "ctl port 0:2 enable", "ctl reg 0 2 1", "ctl port 0:2 speed 100"});
    EXPECT_THAT(r[0], Prints("port 0:2: enabled off\n"));
    EXPECT_THAT(r[1], Prints("0x0001: 0x0000\n"));
    EXPECT_THAT(r[2], Prints("SWITCH  PORT  ENABLED\n     0     2  off\n"));
    EXPECT_THAT(r[3], Prints("port 0:2: enabled on\n"));
    EXPECT_THAT(r[4], Prints("0x0001: 0x0001\n"));
    EXPECT_THAT(r[5], Succeeds());
}

TEST(Port, LinksFollowTheCable)
{
    const auto r = OnBoardUp("one_switch", {"ctl port 1 link", "board link sw0:1 down",
                                            "ctl port 1 link --json", "ctl port --json"});
    EXPECT_THAT(r[0], Prints("SWITCH  PORT  LINK  LINK SPEED  LINK DUPLEX\n"
                             "     0     1  yes         1000  full\n"));
    const auto down = Json(r[2])["ports"][0];
    EXPECT_EQ(down["link"], false);
    EXPECT_TRUE(down["link_speed"].is_null());
    EXPECT_TRUE(down["link_duplex"].is_null());
    const auto ports = Json(r[3])["ports"];
    ASSERT_EQ(ports.size(), 8U);
    EXPECT_EQ(ports[2]["link"], true);
    EXPECT_EQ(ports[2]["link_speed"], 1000);
    EXPECT_TRUE(ports[2]["error"].is_null());
}

TEST(Port, CountersByName)
{
    const auto r =
        OnBoardUp("one_switch", {"board counter sw0:1 aFramesReceivedOK 42", "ctl port 1 counters",
                                 "ctl port 1 counters --json", "ctl port 1 counters reset",
                                 "ctl port 1 counters -o kv"});
    EXPECT_THAT(r[1].out, testing::ContainsRegex("aFramesReceivedOK +42\n"));
    EXPECT_EQ(Json(r[2])["ports"][0]["counters"]["aFramesReceivedOK"], 42);
    EXPECT_EQ(Json(r[2])["ports"][0]["counters"].size(), 30U);
    EXPECT_THAT(r[3], Prints("port 0:1: counters 0\n"));
    EXPECT_THAT(r[4].out, HasSubstr("ports.0.counters.aFramesReceivedOK=0\n"));
}

TEST(Port, SettingsOfASwitchInResetAreStoredAndRestored)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl down 0", "ctl port 0:2 vlan 100", "ctl igmp 0 on", "ctl port 0:2",
                       "ctl up 0 --restore", "ctl reg 0 2 3", "ctl smi 0 0x115"});
    EXPECT_THAT(r[0], Prints("switch 0: state in reset\n"));
    EXPECT_THAT(r[1], Prints("port 0:2: vlan 100 (stored for the next bring-up)\n"));
    EXPECT_THAT(r[2], Prints("switch 0: igmp on (stored for the next bring-up)\n"));
    EXPECT_THAT(r[3], Succeeds());
    EXPECT_THAT(r[4], Prints("switch 0: state enabled\n"));
    EXPECT_THAT(r[5], Prints("0x0003: 0x0064\n"));
    EXPECT_THAT(r[6], Prints("0x0115: 0x0003\n"));
}

TEST(Port, WhatAPortCannotDoIsNotSupported)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl port 0 vlan 5", "ctl port 7 speed 100", "ctl port 1 delay on",
                                 "ctl port 7 dvt 1", "ctl port 7 test-mode", "ctl port 7 eee on",
                                 "ctl mac-vlan remove 0 "
                                 "00:00:5e:00:53:01"});
    EXPECT_THAT(r[0], Refuses(5, "port 0:0: not a LAN port; those are ports 1 to 7"));
    EXPECT_THAT(r[1], Refuses(5, "port 0:7: no PHY is attached to it"));
    EXPECT_THAT(r[2], Refuses(5, "port 0:1: not an RGMII port"));
    EXPECT_THAT(r[3], Refuses(5, "port 0:7: no PHY is attached to it"));
    EXPECT_THAT(r[4], Refuses(5, "port 0:7: no PHY is attached to it"));
    EXPECT_THAT(r[5], Refuses(5, "port 0:7: no PHY is attached to it"));
    EXPECT_THAT(r[6], Refuses(5, "port 0:0: not a LAN port; those are ports 1 to 7"));
}

TEST(Port, TheLibrarysRefusalIsShown)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl port 1 disable", "ctl port 1 speed 100", "ctl -v port 1 speed 100",
                       "ctl port 1 group 3", "board battery 1", "ctl port 2 eee off"});
    EXPECT_THAT(r[1], Refuses(5,
                              "port 0:1: the speed was not set: the port is disabled: "
                              "orblinkctl port 0:1 enable"));
    EXPECT_THAT(r[2].err, StartsWith("liborblink: notice: ORBLINK_SetPhyPortSpeedDuplex:"));
    EXPECT_THAT(r[2].err, HasSubstr("had been disable\n"));
    EXPECT_THAT(r[2].err, testing::EndsWith("enable (ORBLINK_SetPhyPortSpeedDuplex)\n"));
    EXPECT_THAT(r[3], Refuses(5, "port 0:1: the group is locked: write with --lock or --unlock"));
    EXPECT_THAT(r[5], Refuses(1,
                              "port 0:2: EEE was not switched off: the modem runs on battery: "
                              "again on mains power, orblinkctl board shows it"));
}

TEST(Port, LabelsStandForIndices)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '[port]\\nlan2 = \"0:2\"\\n[phy]\\nwan = 0\\n' >names.toml",
         "ctl --names names.toml port lan2 vlan 9", "ctl --names names.toml port 0:2 pcp 1",
         "ctl --names names.toml port lan3", "ctl --names absent.toml port lan2",
         "printf '[port]\\nlan2 = \"0:9\"\\n' >bad.toml; ctl --names bad.toml port lan2",
         "printf '[port\\n' >worse.toml; ctl --names worse.toml port lan2"});
    EXPECT_THAT(r[1], Prints("port 0:2 lan2: vlan 9\n"));
    EXPECT_THAT(r[2], Prints("port 0:2 lan2: pcp 1\n"));
    EXPECT_THAT(r[3],
                Refuses(2,
                        "bad PORT 'lan3': allowed is PORT or SWITCH:PORT with switch 0 or 1 and "
                        "port 0 to 7, or a name of the names file"));
    EXPECT_THAT(r[4], Refuses(2, "absent.toml: No such file or directory"));
    EXPECT_THAT(r[5], Refuses(2,
                              "bad.toml: port.lan2 must be \"SWITCH:PORT\", switch 0 or 1 and "
                              "port 0 to 7"));
    EXPECT_THAT(r[6].err, StartsWith("orblinkctl: worse.toml:1:"));
    EXPECT_EQ(r[6].code, 2);
}

}  // namespace
}  // namespace onboard
