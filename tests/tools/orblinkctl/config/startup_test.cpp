// The configuration after power-on, in an /etc of the test's own.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

TEST(Startup, IsSavedComparedAndApplied)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"unshare -m true", "ctl port 1 vlan 100 >/dev/null",
                   "unshare -m sh -ec 'mount -t tmpfs none /etc; orblinkctl config save --startup; "
                   "ls /etc/orblink; orblinkctl config diff --startup; orblinkctl port 1 vlan 7; "
                   "orblinkctl config diff --startup || echo ended with $?; "
                   "orblinkctl config apply --startup; orblinkctl config diff --startup'",
                   "ctl config save --startup extra.toml", "ctl config apply",
                   "ctl config save - | head -1"});
    if (r[0].code != 0)
        GTEST_SKIP() << "no directory of its own: " << r[0].err;
    EXPECT_THAT(r[2], Prints("startup.toml\n"
                             "no differences\n"
                             "port 0:1: vlan 7\n"
                             "SETTING               BOARD  WANTED\n"
                             "switch.0.port.1.vlan      7     100\n"
                             "ended with 9\n"
                             "done: port 0:1 vlan 100\n"
                             "no differences\n"));
    EXPECT_THAT(r[3], Refuses(2, "either a file or --startup"));
    EXPECT_THAT(r[4], Refuses(2, "which configuration? config apply FILE, or --startup"));
    EXPECT_THAT(r[5], Prints("# Configuration of the board as orblinkctl saved it.\n"));
}

}  // namespace
}  // namespace onboard
