// Lists of ports and several settings in one call: all or none.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;

TEST(Several, PortsAndRangesAreListed)
{
    const auto r = OnBoardUp("two_switches", {"ctl port 0:1-3,1:2 vlan 100",
                                              "ctl reg 0 3 3; ctl reg 1 2 3; ctl reg 0 4 3",
                                              "ctl port 0:1,0:1-2 link -o kv | grep port="});
    EXPECT_THAT(r[0], Prints("port 0:1: vlan 100\nport 0:2: vlan 100\nport 0:3: vlan 100\n"
                             "port 1:2: vlan 100\n"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0064\n0x0003: 0x0064\n0x0003: 0x0001\n"));
    EXPECT_THAT(r[2], Prints("ports.0.port=1\nports.1.port=2\n"));
}

TEST(Several, SettingsFollowEachOther)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl port 0:1-2 vlan 7 pcp 3 speed 100 half tagging tagged",
                                 "ctl reg 0 2 3-5", "ctl port 0:1 vlan 8 group 5 --lock",
                                 "ctl port 0:1 vlan 8 pcp 1 --lock", "ctl port 0:1 vlan 8 link"});
    EXPECT_THAT(r[0], Succeeds());
    EXPECT_THAT(r[0].out, HasSubstr("port 0:2: vlan 7\nport 0:2: pcp 3\nport 0:2: speed 100\n"
                                    "port 0:2: duplex half\nport 0:2: tagging tagged\n"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0007\n0x0004: 0x0003\n0x0005: 0x0001\n"));
    EXPECT_THAT(r[2], Prints("port 0:1: vlan 8\nport 0:1: group 5\n"));
    EXPECT_THAT(r[3], Refuses(2, "option --lock does not belong to 'port PORT vlan VID'"));
    EXPECT_THAT(r[4], Refuses(2,
                              "'port PORT vlan VID' and 'port PORT link' do not go together in "
                              "one call: give them one by one"));
}

// A word that is wrong is found before anything is set.
TEST(Several, NothingIsSetWhenAWordIsWrong)
{
    const auto r = OnBoardUp("one_switch", {"ctl port 0:1-2 vlan 100 pcp 9", "ctl reg 0 1 3",
                                            "ctl port 0:1,0:9 vlan 5", "ctl reg 0 1 3"});
    EXPECT_THAT(r[0], Refuses(2, "bad PCP '9': allowed is 0 to 7"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0001\n"));
    EXPECT_EQ(r[2].code, 3);
    EXPECT_THAT(r[2].err, testing::StartsWith("orblinkctl: no PORT '0:9': allowed is "));
    EXPECT_THAT(r[3], Prints("0x0003: 0x0001\n"));
}

// Port 7 has no PHY: the speed fails after the other settings were made. What was set last is
// undone first, so the journal of the chip shows both ways.
TEST(Several, WhatWasSetIsUndoneInReverseOrderWhenOneFails)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl port 0:6-7 vlan 100 pcp 5 speed 100",
                       "ctl reg 0 6 3-4; ctl reg 0 7 3-4", "ctl port 0:6 speed", "ctl config diff",
                       // Every operation names itself and its port when it is entered.
                       "ctl -v -v port 0:6-7 vlan 100 speed 100 2>&1 | "
                       "sed -n 's/.*ORBLINK_Set\\(LanPortVlan\\|PhyPortSpeedDuplex\\):[0-9]* "
                       "[A-Za-z]*Idx=\\([0-9]\\), .*/\\1 \\2/p'"});
    EXPECT_THAT(r[0], Refuses(5,
                              "port 0:7: no PHY is attached to it; the settings before it were "
                              "taken back"));
    EXPECT_THAT(r[1], Prints("0x0003: 0x0001\n0x0004: 0x0000\n0x0003: 0x0001\n0x0004: 0x0000\n"));
    EXPECT_THAT(r[2], Prints("SWITCH  PORT  SPEED  DUPLEX\n     0     6  auto   full\n"));
    EXPECT_THAT(r[3], Prints("no differences\n"));
    EXPECT_EQ(r[4].out,
              "LanPortVlan 6\nPhyPortSpeedDuplex 6\nLanPortVlan 7\n"
              "LanPortVlan 7\nPhyPortSpeedDuplex 6\nLanPortVlan 6\n");
}

TEST(Several, MirrorTargetsAreWrittenAsPorts)
{
    const auto r = OnBoardUp(
        "two_switches",
        {"ctl port 0:1 mirror 0:3", "ctl reg 0 1 7", "ctl port 1:1 mirror 3", "ctl reg 1 1 7",
         "ctl port 0:1 mirror 1:3",
         "printf '[port]\\nprobe = \"0:4\"\\n' >n.toml; ctl --names n.toml port 0:1 mirror probe",
         "ctl port 0:1 mirror 0:1"});
    EXPECT_THAT(r[0], Prints("port 0:1: mirror 3\n"));
    EXPECT_THAT(r[1], Prints("0x0007: 0x8003\n"));
    EXPECT_THAT(r[2], Prints("port 1:1: mirror 3\n"));
    EXPECT_THAT(r[3], Prints("0x0007: 0x8003\n"));
    EXPECT_THAT(r[4], Refuses(5,
                              "port 0:1 cannot be mirrored to port 1:3: the ports are on "
                              "different switches"));
    EXPECT_THAT(r[5], Prints("port 0:1: mirror 4\n"));
    EXPECT_EQ(r[6].code, 2);
}

TEST(Several, StationsAreFoundBoundAndForgotten)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"ctl aging 0 4800s >/dev/null; board learn sw0:1 00:00:5e:00:53:01",
                   "ctl mac 00:00:5E:00:53:01 -o kv | grep port", "ctl mac 00:00:5e:00:53:02",
                   "ctl mac add 0:2 00:00:5e:00:53:02 1",
                   "ctl mac 00:00:5e:00:53:02 -o kv | grep static", "ctl mac flush",
                   "ctl mac --count", "ctl mac remove 0:2 00:00:5e:00:53:02 1", "ctl mac --count",
                   "ctl mac add 0:2 01:00:5e:00:53:02 1", "ctl down 0 >/dev/null; ctl mac flush"});
    EXPECT_THAT(r[1], Prints("entries.0.port=1\n"));
    EXPECT_THAT(r[2], Refuses(3,
                              "no switch knows 00:00:5e:00:53:02: it has sent nothing, or not "
                              "lately: orblinkctl aging"));
    EXPECT_THAT(r[3], Prints("port 0:2: mac 00:00:5e:00:53:02 vlan 1 static\n"));
    EXPECT_THAT(r[4], Prints("entries.0.static=true\n"));
    EXPECT_THAT(r[5], Prints("switch 0: learnt addresses forgotten\n"));
    EXPECT_THAT(r[6], Prints("count: 1\n"));
    EXPECT_THAT(r[7], Prints("port 0:2: mac 00:00:5e:00:53:02 vlan 1 removed\n"));
    EXPECT_THAT(r[8], Prints("count: 0\n"));
    EXPECT_THAT(r[9], Refuses(2, "01:00:5e:00:53:02 is a group address: no station has it"));
    EXPECT_THAT(r[10], Refuses(5, "switch 0 is in reset: orblinkctl up 0"));
}

TEST(Several, CountersOfAllPorts)
{
    const auto r =
        OnBoardUp("one_switch", {"board counter sw0:1 aFramesReceivedOK 42",
                                 "board counter sw0:3 ifOutDiscards 7", "ctl counters",
                                 "ctl counters --all --json",
                                 "ctl counters --per-second --interval 0.01 --all --json",
                                 "ctl counters clear | wc -l", "ctl counters"});
    EXPECT_THAT(r[2], Prints("PORT  LABEL  COUNTER            VALUE\n"
                             "0:1   -      aFramesReceivedOK     42\n"
                             "0:3   -      ifOutDiscards          7\n"));
    EXPECT_EQ(Json(r[3])["ports"][0]["counters"].size(), 30U);
    EXPECT_EQ(Json(r[4])["ports"][1]["counters"]["aFramesReceivedOK"], 0);
    EXPECT_THAT(r[5], Prints("8\n"));
    EXPECT_THAT(r[6], Prints("PORT  LABEL  COUNTER  VALUE\n"));
}

}  // namespace
}  // namespace onboard
