// `orblink-vboard serve` and `attach`: a board that several programs, users and services share.

#include <gmock/gmock.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::HasSubstr;

TEST(Serve, SeveralProgramsJoinAndLeaveOneBoard)
{
    const std::string socket = TemporaryPath("served.sock");
    auto outcome = Shell("$VBOARD serve --board $BOARDS/two_switches.toml --socket " + socket +
                         " 2>/dev/null &\n"
                         "until test -S " +
                         socket +
                         "; do sleep 0.05; done; sleep 0.3\n"
                         "join() { $VBOARD attach --socket " +
                         socket +
                         " -- \"$@\"; }\n"
                         "join $CLIENT mii nsgmii0 0 16 4 0x1234\n"
                         "join $OTHER mii nsgmii0 0 16 4\n"
                         "join $CLIENT mailbox ack; join $OTHER mailbox ack\n"
                         "join $CLIENT shared /dev/shm/obos_orblink_driver 0x4F425603\n"
                         "join $OTHER shared /dev/shm/obos_orblink_driver 0x4F425603\n"
                         "join sh -c 'exit 7'; echo $?\n"
                         "kill $!; wait $!; echo $?\n");
    EXPECT_EQ(Printed(outcome),
              "written\n0x1234\nreceived 184 of type 10 length 176\nsent 8\n"
              "received 128 of type 11 length 120\nsent 8\nmade\nopen: EEXIST\n7\n0\n");
    EXPECT_NE(access("/dev/shm/obos_orblink_driver", F_OK), 0);
    EXPECT_EQ(semctl(semget(0x4F425603, 1, 0), 0, IPC_RMID), 0);
}

TEST(Serve, ABoardOfRunIsNotJoined)
{
    if (NamespacesAreRefused())
        GTEST_SKIP() << "namespaces are not allowed here";
    auto outcome = OnBoard("no_devices.toml",
                           "setsid $VBOARD attach --socket $ORBLINK_VBOARD -- true; echo $?");
    EXPECT_THAT(outcome.output, HasSubstr("'orblink-vboard serve' runs one that can be joined\n1"));
}

// A board of this user, and what another one, or a service, does on it.
std::string OnSharedBoard(const std::string& options, const std::string& script)
{
    const std::string socket = TemporaryPath("shared.sock");
    auto outcome =
        Shell("umask 0; cd /; env -i $VBOARD serve --board $BOARDS/two_switches.toml " + options +
              " --socket " + socket +
              " </dev/null 2>/dev/null &\n"
              "until test -S " +
              socket + "; do sleep 0.05; done; sleep 0.3\nattach=\"$VBOARD attach --socket " +
              socket + " --\"\n" + script + "kill $!; wait $!\n");
    return Printed(outcome);
}

// As a unit has it: no terminal, no variable, nothing to read, another directory.
constexpr char kService[] = "env -i setsid -w ";

TEST(Serve, AServiceJoins)
{
    EXPECT_EQ(OnSharedBoard("", std::string("cd /; service() { ") + kService +
                                    "$attach \"$@\" </dev/null; }\n"
                                    "service $CLIENT mii nsgmii0 0 16 4 0x4242\n"
                                    "service $OTHER mii nsgmii0 0 16 4\n"
                                    "service $CLIENT mailbox ack\n"
                                    "service $CLIENT system 'echo $PATH; ip -br link show nsgmii0 "
                                    "| cut -c 1-7'\n"),
              "written\n0x4242\nreceived 184 of type 10 length 176\nsent 8\n"
              "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin\nnsgmii0\nstatus 0\n");
}

TEST(Serve, AnotherUserJoinsByThePermissionOfTheSocket)
{
    const auto drop = AsOrdinaryUser();
    if (!drop || drop->empty())
        GTEST_SKIP() << "there is no second user here";
    const std::string other = *drop + kService + "$attach ";
    const std::string socket = TemporaryPath("shared.sock");
    EXPECT_EQ(OnSharedBoard("--time-scale 0.001",
                            "ctl=$(dirname $VBOARD)/orblinkctl\n"
                            "$attach $ctl init >/dev/null; $attach $ctl up 0 >/dev/null\n" +
                                other + "$ctl port 0:2 vlan 100\n" +
                                "$attach $ctl port 0:2 vlan | grep -c ' 100 '\n" + other +
                                "$CLIENT mii nsgmii0 1 16 4 0x4242\n"
                                "$attach $CLIENT mii nsgmii0 1 16 4\n"
                                "chmod go-w " +
                                socket + "; " + other + "true; echo $?\n"),
              "port 0:2: vlan 100\n1\nwritten\n0x4242\norblink-vboard: no board at " + socket +
                  ": Permission denied\n1\n");
}

}  // namespace
}  // namespace vboard_test
