// `orblink-vboard run`: namespaces, exit status, signals, complaints.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

TEST(Run, PassesTheExitStatusOn)
{
    EXPECT_EQ(OnBoard("no_devices.toml", "exit 0").status, 0);
    EXPECT_EQ(OnBoard("no_devices.toml", "exit 42").status, 42);
    EXPECT_EQ(OnBoard("no_devices.toml", "kill -KILL $$").status, 128 + 9);
}

TEST(Run, TheBoardGoesBeforeItsProgramsWhereItMay)
{
    // Its process is in the name of the socket.
    auto outcome = OnBoard("no_devices.toml",
                           "board=$(echo $ORBLINK_VBOARD | sed 's/.*vboard.\\([0-9]*\\).*/\\1/')\n"
                           "echo $(($(nice) - $(ps -o ni= -p $board)))\n");
    const bool may = Shell("test $(nice -n -1 nice 2>/dev/null) -lt $(nice)").status == 0;
    EXPECT_EQ(Printed(outcome), may ? "5\n" : "0\n");
}

TEST(Run, LowLatencyIsRefusedByNameWhereTheKernelRefusesIt)
{
    const bool may = access("/dev/cpu_dma_latency", W_OK) == 0;
    auto outcome = Shell("$RUN --low-latency --board $BOARDS/no_devices.toml -- sh -c 'exit 42'");
    EXPECT_EQ(outcome.status, may ? 42 : 1);
    if (!may)
        EXPECT_THAT(outcome.output,
                    HasSubstr("cannot keep processors awake: /dev/cpu_dma_latency"));
    auto foreign = Shell(
        "setpriv --reuid 65534 --clear-groups $RUN --low-latency --board "
        "$BOARDS/no_devices.toml -- true");
    if (may && geteuid() == 0)
        EXPECT_THAT(foreign.output, HasSubstr("/dev/cpu_dma_latency: Permission denied"));
}

TEST(Run, SaysWhyACommandDoesNotStart)
{
    auto missing = Shell("$RUN --board $BOARDS/no_devices.toml -- /no/such/program");
    EXPECT_EQ(missing.status, 127);
    EXPECT_THAT(missing.output,
                HasSubstr("orblink-vboard: cannot run /no/such/program: No such file"));
    auto directory = Shell("$RUN --board $BOARDS/no_devices.toml -- /tmp");
    EXPECT_EQ(directory.status, 126);
}

TEST(Run, ClosedStandardStreamsAreNoRoomForTheBoardsOwnFiles)
{
    const std::string streams = "readlink /proc/self/fd/0 /proc/self/fd/2";
    const std::string file = TemporaryPath("streams");
    auto closed = Shell("$RUN --board $BOARDS/no_devices.toml -- sh -c '" + streams + " >" + file +
                        "; exit 0' <&- >&- 2>&-; cat " + file);
    EXPECT_EQ(closed.output, "/dev/null\n/dev/null\n");
}

TEST(Run, UsageErrorsAreTwo)
{
    EXPECT_EQ(Shell("$VBOARD").status, 2);
    EXPECT_EQ(Shell("$RUN -- true").status, 2);
    EXPECT_EQ(Shell("$RUN --board $BOARDS/phy.toml").status, 2);
    EXPECT_EQ(Shell("$RUN --board $BOARDS/phy.toml --time-scale 0 -- true").status, 2);
    EXPECT_EQ(Shell("$RUN --board $BOARDS/phy.toml --time-scale nan -- true").status, 2);
    EXPECT_EQ(Shell("$RUN --board $BOARDS/phy.toml --nonsense -- true").status, 2);
    EXPECT_EQ(Shell("$VBOARD --help").status, 0);
}

TEST(Run, AMistakeInTheBoardFileIsNamedWithItsPlace)
{
    std::string path = TemporaryPath("bad.toml");
    std::ofstream{path} << "battery = \"on\"\nbatery = 1\n";
    auto outcome = Shell("$RUN --board " + path + " -- true");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output,
                HasSubstr(path + ":1:11: battery: expected an integer from 0 to 2147483647\n"));
    EXPECT_THAT(outcome.output, HasSubstr(path + ":2:1: unknown key 'batery': expected one of "));
}

TEST(Run, EveryShippedBoardLoads)
{
    for (const char* board :
         {"no_devices.toml", "one_switch.toml", "phy.toml", "two_switches.toml"})
        EXPECT_EQ(OnBoard(board, "exit 0").status, 0) << board;
}

TEST(Run, SharedMemoryAndSemaphoresAreOfTheBoardAlone)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    constexpr key_t kKey = 0x4F425601;
    unlink("/dev/shm/vboard_run_test");
    unlink("/var/tmp/vboard_run_test");
    ASSERT_EQ(semget(kKey, 1, 0), -1);
    auto outcome = OnBoard("no_devices.toml",
                           "$CLIENT shared /dev/shm/vboard_run_test 0x4F425601\n"
                           "touch /var/tmp/vboard_run_test\n"
                           "ls -d /dev/shm/vboard_run_test /var/tmp/vboard_run_test\n");
    EXPECT_EQ(Printed(outcome), "made\n/dev/shm/vboard_run_test\n/var/tmp/vboard_run_test\n");
    EXPECT_NE(access("/dev/shm/vboard_run_test", F_OK), 0);
    EXPECT_NE(access("/var/tmp/vboard_run_test", F_OK), 0);
    EXPECT_EQ(semget(kKey, 1, 0), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Run, WhatIsThereOutsideIsNotSeenInside)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    auto outcome = OnBoard("no_devices.toml", "ls -A /dev/shm /var/tmp | grep -v :");
    EXPECT_THAT(Printed(outcome), MatchesRegex("\n*"));
}

constexpr const char* kLibraryNames[] = {"/dev/shm/obos_orblink_driver", "/dev/shm/ethphy_driver",
                                         "/var/tmp/orblink_sem", "/var/tmp/ethphy_sem"};

bool AnyLibraryNameExists()
{
    return std::any_of(std::begin(kLibraryNames), std::end(kLibraryNames),
                       [](const char* path) { return access(path, F_OK) == 0; });
}

TEST(Run, NamesOfTheBoardsOwnHideThoseOfTheMachine)
{
    auto outcome = OnBoard("no_devices.toml",
                           "touch /var/tmp/ethphy_sem && test -e /var/tmp/ethphy_sem && echo made",
                           "--isolation names");
    EXPECT_EQ(Printed(outcome), "made\n");
    EXPECT_THAT(outcome.output, HasSubstr(", with names of its own\n"));
    if (!AnyLibraryNameExists())
        EXPECT_EQ(Printed(OnBoard("no_devices.toml", "test -e /var/tmp/ethphy_sem || echo none",
                                  "--isolation names")),
                  "none\n");
}

// In one test, because there is one machine.
TEST(Run, TheMachinesNamesAreOneBoardsAtATimeAndGoWithIt)
{
    if (AnyLibraryNameExists())
        GTEST_SKIP() << "a system runs on this machine";
    const std::string run = "$RUN --isolation machine --board $BOARDS/no_devices.toml -- ";
    auto refused = Shell("touch /dev/shm/ethphy_driver; " + run + "true; echo status $?\n" +
                         "rm /dev/shm/ethphy_driver");
    EXPECT_THAT(refused.output, HasSubstr("the machine's own names are in use: /dev/shm/ethphy_"));
    EXPECT_THAT(refused.output, HasSubstr("status 1\n"));

    auto first = Shell(run + "sh -c 'touch /var/tmp/ethphy_sem /dev/shm/ethphy_driver; " +
                       "touch $0.ready; exec sleep 20' $0 &\n"
                       "until test -e $0.ready; do sleep 0.05; done\n"
                       "ls /var/tmp/ethphy_sem\n" +
                       run + "true; echo status $?\n" + "kill -KILL $!; wait $! 2>/dev/null\n");
    EXPECT_THAT(first.output, HasSubstr(", with the machine's own names\n"));
    EXPECT_THAT(first.output, HasSubstr("/var/tmp/ethphy_sem\n"));
    EXPECT_THAT(first.output, HasSubstr("another board has the machine's own names\nstatus 1\n"));
    for (int tries = 0; tries < 200 && AnyLibraryNameExists(); ++tries)
        usleep(20000);
    EXPECT_FALSE(AnyLibraryNameExists());
    EXPECT_EQ(Shell(run + "true").status, 0);
}

TEST(Run, WorksForAnOrdinaryUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "not root: every other test shows it";
    const auto drop = AsOrdinaryUser();
    if (!drop)
        GTEST_SKIP() << "the build tree is closed to user 65534";
    if (Shell(*drop + "unshare -Ur true").status != 0)
        GTEST_SKIP() << "user namespaces are not allowed here";
    std::string script = TemporaryPath("script_of_user");
    std::ofstream{script} << "id -u; $CLIENT shared /dev/shm/of_user 0x4F425602; $CLIENT read 2\n";
    auto outcome = Shell(*drop + "$RUN --board $BOARDS/phy.toml -- sh " + script);
    EXPECT_EQ(Printed(outcome), "65534\nmade\n1 of value 0\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Run, SeveralProcessesSeeOneBoard)
{
    auto outcome =
        OnBoard("no_devices.toml",
                "for i in 1 2 3 4 5 6 7 8; do\n"
                "  (for j in 1 2 3 4 5 6 7 8 9 10; do $CLIENT lane 3 >/dev/null; done) &\n"
                "done; wait; $VBOARD control state | grep laneResets\n");
    EXPECT_EQ(Printed(outcome), "laneResets: 3=80 4=0 5=0 6=0\n");
}

TEST(Run, ASignalReachesTheCommand)
{
    auto outcome = Shell(
        "echo 'trap \"exit 9\" TERM; echo ready > $0.ready; while :; do sleep 0.05; done' > "
        "$0.run\n"
        "$RUN --board $BOARDS/no_devices.toml -- sh $0.run &\n"
        "until test -e $0.run.ready; do sleep 0.05; done\n"
        "kill -TERM $!; wait $!; echo status $?\n");
    EXPECT_EQ(Printed(outcome), "status 9\n");
}

TEST(Run, TheSocketIsWhereItWasAskedForAndGoesWithTheBoard)
{
    std::string socket = TemporaryPath("board.sock");
    auto outcome =
        Shell("$RUN --socket " + socket +
              " --board $BOARDS/one_switch.toml -- sh -c 'touch $0.ready; exec sleep 30' $0 &\n"
              "until test -e $0.ready; do sleep 0.05; done\n"
              "$VBOARD control --socket " +
              socket +
              " battery 5\n"
              "$VBOARD control --socket " +
              socket +
              " state | grep battery\n"
              "kill -TERM $!; wait $!; echo status $?\n");
    EXPECT_EQ(Printed(outcome), "battery: 5\nstatus 143\n");
    EXPECT_NE(access(socket.c_str(), F_OK), 0);
}

TEST(Run, LeavesNothingBehind)
{
    auto outcome =
        OnBoard("no_devices.toml", "dirname $ORBLINK_VBOARD; ls $ORBLINK_VBOARD >/dev/null");
    std::string directory = Printed(outcome);
    ASSERT_THAT(directory, MatchesRegex("/.*orblink-vboard\\.[0-9]+\n"));
    directory.pop_back();
    EXPECT_NE(access(directory.c_str(), F_OK), 0);
}

TEST(Run, WhatTheCommandHasStartedEndsWithIt)
{
    auto outcome = OnBoard("no_devices.toml",
                           "setsid sh -c 'echo $$; exec sleep 600' & sleep 600 & echo $!\n"
                           "until test $(ls /proc/$!/exe | wc -l) = 1; do sleep 0.05; done\n"
                           "sleep 0.3; exit 3\n");
    EXPECT_EQ(outcome.status, 3);
    std::istringstream pids{Printed(outcome)};
    int count = 0;
    for (pid_t pid = 0; pids >> pid; ++count)
        EXPECT_NE(kill(pid, 0), 0) << pid;
    EXPECT_EQ(count, 2);
}

TEST(Run, AKilledBoardTakesItsCommandAlongAndIsInNobodysWay)
{
    const std::string run = "$RUN --board $BOARDS/no_devices.toml -- sh ";
    // Other boards remove what they find in the same place.
    auto outcome = Shell(
        "export XDG_RUNTIME_DIR=$(dirname $0)\n"
        "echo 'setsid sleep 600 & echo $! >$0.pid; dirname $ORBLINK_VBOARD >$0.dir\n"
        "touch $0.ready; exec sleep 600' >$0.run\n" +
        run +
        "$0.run & until test -e $0.run.ready; do sleep 0.05; done\n"
        "kill -KILL $!; wait $! 2>/dev/null\n"
        "for i in 1 2 3 4 5 6 7 8 9 10; do kill -0 $(cat $0.run.pid) 2>/dev/null && sleep 0.2; "
        "done\n"
        "kill -0 $(cat $0.run.pid) 2>/dev/null && echo alive\n"
        "test -d $(cat $0.run.dir) && echo left\n" +
        run + "-c 'echo again'\ntest -d $(cat $0.run.dir) || echo swept\n");
    EXPECT_THAT(outcome.output, Not(HasSubstr("alive")));
    EXPECT_THAT(outcome.output, HasSubstr("left\n"));
    EXPECT_THAT(outcome.output, HasSubstr("again\nswept\n"));
}

TEST(Run, TheEnvironmentStaysAsItWasButForTheAdministratorsPrograms)
{
    auto outcome = Shell(
        "LD_LIBRARY_PATH=/given PATH=/usr/bin:/bin $RUN --board $BOARDS/no_devices.toml -- "
        "sh -c 'echo $LD_LIBRARY_PATH $LD_PRELOAD $PATH'");
    EXPECT_EQ(Printed(outcome), "/given /usr/bin:/bin:/usr/sbin:/sbin\n");
}

TEST(Run, ABoardInsideABoardIsRefusedInOneLine)
{
    auto outcome = OnBoard("no_devices.toml",
                           "$RUN --board $BOARDS/no_devices.toml -- echo inner 2>$0.e; echo $?\n"
                           "grep -v ': board \"' $0.e\n");
    EXPECT_EQ(Printed(outcome),
              "1\norblink-vboard: this process runs on a board already, and a board inside a board "
              "is not possible\n");
}

TEST(Run, RequestsThroughARingAreNotAWayPastTheBoard)
{
    auto outcome = OnBoard("no_devices.toml", "$CLIENT ring");
    EXPECT_EQ(Printed(outcome), "io_uring_setup: ENOSYS\n");
}

TEST(Run, AWordThatLooksLikeAnOptionOfTheCommandIsTheCommands)
{
    auto outcome = Shell("$RUN --board $BOARDS/no_devices.toml -- sh -c 'echo $0 $1' -- --board");
    EXPECT_EQ(Printed(outcome), "-- --board\n");
}

}  // namespace
}  // namespace vboard_test
