// Registers with their bits by name.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

TEST(Registers, OfAPortAreDecoded)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl port 2 vlan 100; ctl port 2 mirror 5", "ctl reg 0 2 2-3 --decode",
                       "ctl reg 0 2 7 --decode", "ctl reg 0 2 3 --decode --json"});
    EXPECT_THAT(r[1], Prints("0x0002: 0x0013  status\n"
                             "      4:2  speed: 0 none, 1 negotiated, 2 = 10, 3 = 100, 4 = 1000, "
                             "5 = 2500 Mb/s: 4\n"
                             "        1  full duplex: 1\n"
                             "        0  link up: 1\n"
                             "0x0003: 0x0064  VLAN\n"
                             "     11:0  VLAN id: 100\n"));
    EXPECT_THAT(r[2], Prints("0x0007: 0x8005  mirror\n"
                             "       15  enable: 1\n"
                             "      2:0  destination port: 5\n"));
    const auto entry = Json(r[3])["registers"][0];
    EXPECT_EQ(entry["name"], "VLAN");
    EXPECT_EQ(entry["bits"][0]["value"], 100);
}

// The same register by the chip's own addresses, where its block has to be named.
TEST(Registers, OfTheChipAreDecoded)
{
    const auto r = OnBoardUp("one_switch", {"ctl port 2 vlan 100; ctl mtu 0 1600",
                                            "ctl smi 0 0x1203 --decode", "ctl smi 0 0x114 --decode",
                                            "ctl smi 0 0x200e --decode", "ctl smi 0 2 --decode"});
    EXPECT_THAT(r[1], Prints("0x1203: 0x0064  port 2 VLAN\n     11:0  VLAN id: 100\n"));
    EXPECT_THAT(r[2], Prints("0x0114: 0x0640  MTU\n     15:0  octets: 1600\n"));
    EXPECT_THAT(r[3], Prints("0x200e: 0x0000  queue 1 reserved\n      5:0  buffers: 0\n"));
    EXPECT_THAT(r[4], Prints("0x0002: 0x0003  status\n        1  receive path ready: 1\n"
                             "        0  ready: 1\n"));
}

}  // namespace
}  // namespace onboard
