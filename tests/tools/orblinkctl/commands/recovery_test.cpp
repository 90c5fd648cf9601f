// Families after a process has ended in the middle of a call.
#include <unistd.h>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::AllOf;
using testing::HasSubstr;

const std::string kHolder = "$ORBLINK_BUILD/tests/lock_holder ";

std::string InBackground(const std::string& steps)
{
    return kHolder + steps + " >ready & echo $! >holder; until [ -s ready ]; do sleep 0.01; done";
}

TEST(Recover, ShowsHealthyFamiliesAndChangesNothing)
{
    const auto r =
        OnBoardUp("phy", {"ctl recover", "ctl recover --apply", "ctl phy 0 -o kv | head -2"});
    for (size_t i = 0; i < 2; ++i)
        EXPECT_THAT(AsRootSeesIt(r[i]), Prints("switch family: 1 found, the lock is free\n"
                                               "PHY family: 2 found, the lock is free\n"));
    EXPECT_THAT(r[2], Prints("schema=2\nphys.0.phy=0\n"));
}

TEST(Recover, FreesThePhyLockOfAnEndedHolderAndKeepsEverySetting)
{
    const auto r = OnBoardUp(
        "phy", {"ctl phy 0 up >/dev/null; ctl phy 0 disable >/dev/null; ctl config save before",
                kHolder + "phy take", "ctl --wait 0 phy 0", "ctl recover --phy",
                "ctl recover --phy --apply", "ctl config save after && cmp before after",
                "grep 'admin = false' after"});
    EXPECT_EQ(r[1].code, 0) << r[1].err;
    EXPECT_EQ(r[2].code, 7);
    EXPECT_THAT(r[2].err, AllOf(HasSubstr("which has ended, has held the lock since"),
                                HasSubstr(": orblinkctl recover --apply\n")));
    EXPECT_EQ(r[3].code, 8);
    EXPECT_THAT(r[3].out, AllOf(HasSubstr("PHY family: locked: process "),
                                HasSubstr("  next: orblinkctl recover --apply\n")));
    EXPECT_EQ(r[4].code, 0) << r[4].err;
    EXPECT_THAT(r[4].out, HasSubstr("  done: the lock is free, every setting is kept\n"));
    EXPECT_EQ(r[5].code, 0) << r[5].out << r[5].err;
    EXPECT_EQ(r[6].code, 0) << "the setting was not there";
}

TEST(Recover, NeverTouchesTheLockOfALivingHolder)
{
    const auto r = OnBoardUp(
        "phy", {InBackground("phy take wait"), "ctl recover --phy", "ctl recover --phy --apply",
                "ctl recover --apply --force", "ctl --wait 0 phy 0", "kill $(cat holder)"});
    EXPECT_EQ(r[1].code, 0);
    EXPECT_THAT(r[1].out, AllOf(HasSubstr("PHY family: busy: process "),
                                HasSubstr("(lock_holder) has held the lock since")));
    EXPECT_EQ(r[2].code, 5);
    EXPECT_THAT(r[2].out, HasSubstr("(lock_holder) holds the lock and lives\n"));
    EXPECT_EQ(r[3].code, 5);
    EXPECT_EQ(r[4].code, 7) << "the lock was freed";
}

TEST(Recover, LeavesALockWhoseHolderCannotBeSeenFromHere)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    const std::string apart = std::string("unshare ") + (geteuid() == 0 ? "" : "-r ") +
                              "--pid --fork --mount-proc orblinkctl recover --phy --apply";
    const auto r = OnBoardUp(
        "phy", {InBackground("phy take wait"), apart, "ctl --wait 0 phy 0", "kill $(cat holder)",
                apart + " --force", "ctl --wait 0 phy 0 >/dev/null"});
    EXPECT_EQ(r[1].code, 5) << r[1].err;
    EXPECT_THAT(r[1].out,
                AllOf(HasSubstr("an unknown process has held the lock since"),
                      HasSubstr("  in the way: whoever used the lock last is in another PID "
                                "namespace, where it may live\n"
                                "  next: orblinkctl recover --apply --force\n")));
    EXPECT_EQ(r[2].code, 7) << "the lock was freed";
    EXPECT_EQ(r[4].code, 0) << r[4].out << r[4].err;
    EXPECT_EQ(r[5].code, 0) << r[5].err;
}

// A lock that was made and never used: nobody knows who made it.
TEST(Recover, UndoesACutOffInitialisation)
{
    const auto r = OnBoard("phy", {kHolder + "phy make; sleep 2.1", "ctl init --phy",
                                   "ctl recover --phy", "ctl recover --phy --apply", "ctl init"});
    EXPECT_THAT(r[1].err, HasSubstr("initialisation unfinished"));
    EXPECT_EQ(r[1].code, 4);
    EXPECT_EQ(r[2].code, 8);
    EXPECT_THAT(r[3].out, HasSubstr("the initialisation is undone: run 'orblinkctl init'"));
    EXPECT_EQ(r[4].code, 0) << r[4].err;
}

TEST(Recover, LeavesAnInitialisationThatMayStillRun)
{
    const auto r = OnBoard(
        "phy",
        {"board fault silent --times 0; orblinkctl init --phy >/dev/null & echo $! >init; "
         "until grep -qs ethphy_driver /proc/$(pgrep -P $(cat init))/maps; do sleep 0.01; done",
         "ctl recover --phy --apply",
         "kill -9 $(pgrep -P $(cat init)) $(cat init); ctl recover --phy --apply --force",
         "board fault clear; ctl init"});
    EXPECT_EQ(r[1].code, 5);
    EXPECT_THAT(r[1].out, AllOf(HasSubstr("(orblinkctl) uses the region and may hold the lock"),
                                HasSubstr("next: orblinkctl recover --apply --force")));
    EXPECT_EQ(r[2].code, 0) << r[2].err;
    EXPECT_EQ(r[3].code, 0) << r[3].err;
}

// The kernel frees the switch lock of an initialisation that is killed while it waits.
TEST(Recover, UndoesASwitchInitialisationThatWasKilled)
{
    const auto r = OnBoard(
        "one_switch",
        {"board fault silent --times 0; orblinkctl init --switch >/dev/null & echo $! >init; "
         "until grep -qs obos_orblink /proc/$(pgrep -P $(cat init))/maps; do sleep 0.01; done; "
         "kill -9 $(pgrep -P $(cat init)) $(cat init); wait; board fault clear",
         "ctl init --switch", "ctl recover --switch --apply", "ctl init --switch >/dev/null",
         "ctl port -o kv | head -2"});
    EXPECT_EQ(r[1].code, 4);
    EXPECT_THAT(r[1].err, HasSubstr("no devices, or initialisation unfinished"));
    EXPECT_EQ(r[2].code, 0) << r[2].err;
    EXPECT_EQ(r[3].code, 0) << r[3].err;
    EXPECT_THAT(r[4], Prints("schema=2\nports.0.switch=0\n"));
}

TEST(Recover, JsonHoldsTheFacts)
{
    const auto r = OnBoardUp("phy", {InBackground("phy map take wait"), "ctl --json recover --phy",
                                     "kill $(cat holder)"});
    const auto entry = Json(r[1])["recovery"][0];
    EXPECT_EQ(entry["family"], "phy");
    EXPECT_EQ(entry["verdict"], "busy");
    EXPECT_EQ(entry["lock_value"], 0);
    EXPECT_EQ(entry["holder"], "alive");
    EXPECT_EQ(entry["devices"], 2);
    ASSERT_EQ(entry["users"].size(), 1U);
    EXPECT_EQ(entry["users"][0]["name"], "lock_holder");
    EXPECT_EQ(entry["users"][0]["process"], entry["last_operator"]);
}

TEST(Recover, ForceBelongsToApply)
{
    const auto r = OnBoard("no_devices", {"ctl recover --force", "ctl recover"});
    EXPECT_THAT(r[0], Refuses(2, "--force belongs to --apply"));
    EXPECT_THAT(r[1], Prints("switch family: not initialised\n  next: orblinkctl init\n"
                             "PHY family: not initialised\n  next: orblinkctl init\n"));
}

TEST(Doctor, FindsAHealthyBoardWell)
{
    const auto r = OnBoardUp("phy", {"for n in 0 1; do ctl phy $n up; done >/dev/null",
                                     "ctl doctor", "ctl --json doctor"});
    EXPECT_EQ(r[1].code, 0) << r[1].out << r[1].err;
    EXPECT_THAT(r[1].out, AllOf(HasSubstr("ok: switch permissions: /dev/shm/"),
                                HasSubstr("ok: switch lock: free\n"),
                                HasSubstr("ok: switch initialisation: complete, 1 found\n"),
                                HasSubstr("ok: switch region: 5740 bytes, as it should be\n"),
                                HasSubstr("ok: switch 0 data path: the chip answers\n"),
                                HasSubstr("ok: PHY 0 data path: the PHY answers\n"),
                                HasSubstr("ok: PHY 1 HAL: "), HasSubstr("ok: mailbox: ")));
    const auto report = Json(r[2]);
    for (const auto& check : report["checks"])
        EXPECT_EQ(check["state"], "ok") << check;
}

TEST(Doctor, NamesWhatIsWrongAndWhatMendsIt)
{
    const auto r =
        OnBoardUp("phy", {"ctl phy 0 up >/dev/null; ctl down 0 >/dev/null", kHolder + "phy take",
                          "printf '\\311\\030' | dd of=/dev/shm/obos_orblink_driver bs=1 seek=188 "
                          "conv=notrunc status=none",
                          "ctl doctor"});
    EXPECT_EQ(r[3].code, 1);
    EXPECT_THAT(r[3].out,
                AllOf(HasSubstr("bad: switch 0 record: port 0:2 has VLAN 6345, the most is 4094\n"
                                "    next: orblinkctl down 0; orblinkctl up 0 --defaults\n"),
                      HasSubstr("not checked: switch 0 data path: it is not up\n"
                                "    next: orblinkctl up 0\n"),
                      HasSubstr("bad: PHY lock: locked: process "),
                      HasSubstr("    next: orblinkctl recover --apply\n")));
}

TEST(Doctor, NamesWhoHoldsALockAndSinceWhen)
{
    const auto r = OnBoardUp(
        "phy", {InBackground("phy take wait"), "ctl doctor", "cat holder", "kill $(cat holder)"});
    EXPECT_EQ(r[1].code, 1);
    const std::string holder = r[2].out.substr(0, r[2].out.find('\n'));
    EXPECT_THAT(r[1].out, AllOf(HasSubstr("bad: PHY lock: busy: process " + holder +
                                          " (lock_holder) has held the lock since 20"),
                                HasSubstr(" s ago)\n    next: wait, or end it: kill " + holder),
                                HasSubstr("not checked: PHY initialisation: the lock is held\n")));
}

TEST(Doctor, SaysWhoMayUseTheRegion)
{
    const std::string region = "/dev/shm/obos_orblink_driver";
    const auto r =
        OnBoardUp("one_switch", {"chmod o+w " + region + "; ctl doctor", "chmod o-w " + region,
                                 "ctl doctor | grep 'switch permissions'"});
    EXPECT_EQ(r[0].code, 1);
    EXPECT_THAT(r[0].out, HasSubstr("mode 0646: everybody may name the library that is loaded\n"
                                    "    next: chmod o-w " +
                                    region + "\n"));
    EXPECT_THAT(r[2].out, testing::MatchesRegex("ok: switch permissions: " + region +
                                                " belongs to user [^ ]+, group [^ ]+, mode "
                                                "0644\n"));
}

TEST(Doctor, BeginsWhereNothingIsInitialised)
{
    const auto r = OnBoard("one_switch", {"ctl doctor"});
    EXPECT_EQ(r[0].code, 1);
    EXPECT_THAT(r[0].out, HasSubstr("bad: switch initialisation: not initialised\n"
                                    "    next: orblinkctl init\n"));
}

// The switch of such a board is what it has.
TEST(Doctor, ABoardWithoutPhysIsWell)
{
    const auto r = OnBoardUp("one_switch", {"ctl doctor"});
    EXPECT_EQ(r[0].code, 0) << r[0].out << r[0].err;
    EXPECT_THAT(r[0].out, HasSubstr("ok: PHY initialisation: complete, the board has none\n"));
}

TEST(Doctor, SaysWhyALibraryCannotBeLoaded)
{
    const auto r =
        OnBoard("one_switch",
                {"ctl init >/dev/null; s=/dev/shm/obos_orblink_driver; "
                 "at=$(grep -aob liborblink_velmar.so $s | head -1 | cut -d: -f1); "
                 "printf libabsent | dd of=$s bs=1 seek=$at conv=notrunc status=none; ctl doctor"});
    EXPECT_EQ(r[0].code, 1);
    EXPECT_THAT(r[0].out, AllOf(HasSubstr("cannot open shared object file"),
                                HasSubstr("    next: install it, or LD_LIBRARY_PATH=")));
}

TEST(SharedState, ATooShortRegionIsNeverTouched)
{
    const auto r = OnBoardUp("one_switch", {"truncate -s 100 /dev/shm/obos_orblink_driver",
                                            "ctl port", "ctl recover --switch"});
    const std::string fault =
        "/dev/shm/obos_orblink_driver has 100 of 5740 bytes; end the processes that use it, then "
        "'rm /dev/shm/obos_orblink_driver' and 'orblinkctl recover --apply'";
    EXPECT_THAT(r[1], Refuses(8, fault));
    EXPECT_EQ(r[2].code, 8);
    EXPECT_EQ(AsRootSeesIt(r[2]).out, "switch family: damaged: " + fault + "\n");
}

TEST(SharedState, RootTakesNoRegionOfSomebodyElse)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root is to be protected";
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    const auto r =
        OnBoard("one_switch",
                {": >/dev/shm/obos_orblink_driver; chown 1000 /dev/shm/obos_orblink_driver",
                 "ctl init", "ls /var/tmp", "rm /dev/shm/obos_orblink_driver",
                 "ctl init >/dev/null", "chown 1000 /dev/shm/obos_orblink_driver", "ctl port"});
    const std::string fault =
        "/dev/shm/obos_orblink_driver belongs to user 1000, who could name any library there: 'rm "
        "/dev/shm/obos_orblink_driver'";
    EXPECT_THAT(r[1], Refuses(8, fault));
    EXPECT_THAT(r[2].out, testing::Not(HasSubstr("orblink_sem"))) << "something was made";
    EXPECT_EQ(r[4].code, 0) << r[4].err;
    EXPECT_THAT(r[6], Refuses(8, fault));
}

// The program is killed while it copies the PHY records, in the only lock that it takes itself.
TEST(SharedState, AKilledReaderLeavesThePhyLockFree)
{
    const auto r = OnBoardUp(
        "phy",
        {"LD_PRELOAD=$LD_PRELOAD:$ORBLINK_BUILD/tests/lib/libkill_in_unlock.so orblinkctl phy",
         "ctl --wait 0 phy 0 -o kv | head -2"});
    EXPECT_EQ(r[0].code, 137) << r[0].out << r[0].err;
    EXPECT_THAT(r[1], Prints("schema=2\nphys.0.phy=0\n"));
}

// A closed stream's number must not become that of the region.
TEST(SharedState, OutputToAClosedStreamGoesNowhere)
{
    const auto r = OnBoardUp("one_switch",
                             {"cksum </dev/shm/obos_orblink_driver; orblinkctl port 0:1 vlan >&-; "
                              "orblinkctl port 0:99 2>&-; orblinkctl port <&- >&- 2>&-; "
                              "cksum </dev/shm/obos_orblink_driver"});
    const size_t half = r[0].out.size() / 2;
    EXPECT_GT(half, 5U);
    EXPECT_EQ(r[0].out.substr(0, half), r[0].out.substr(half));
}

}  // namespace
}  // namespace onboard
