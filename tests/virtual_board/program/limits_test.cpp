// What the virtual board cannot do on this machine, or for this user, it says in one line.

#include <gmock/gmock.h>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

struct Refusal {
    const char* number;
    const char* reason;
};
void PrintTo(const Refusal& refusal, std::ostream* out)
{
    *out << refusal.number;
}

class WithoutTheFilter : public testing::TestWithParam<Refusal> {};

TEST_P(WithoutTheFilter, RunSaysSoAndStartsNothing)
{
    auto outcome = Shell(std::string("$PLAIN --listener-fails ") + GetParam().number +
                         " $RUN --isolation names --board $BOARDS/no_devices.toml -- echo begun");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(Printed(outcome), std::string("orblink-vboard: ") + GetParam().reason + "\n");
    EXPECT_THAT(outcome.output, HasSubstr("board.sock"));
    const std::string socket = outcome.output.substr(outcome.output.find(" at /") + 4);
    EXPECT_NE(Shell("test -e " + socket.substr(0, socket.find_first_of(",\n"))).status, 0);
}

INSTANTIATE_TEST_SUITE_P(All, WithoutTheFilter,
                         testing::ValuesIn(std::vector<Refusal>{
                             {"1",
                              "a sandbox forbids the filter of system calls (seccomp user "
                              "notification): Operation not permitted"},
                             {"22",
                              "this kernel cannot ask the board about system calls: seccomp user "
                              "notification, Linux 5.9 or later, is missing"}}));

// On each board as this machine can make it.
class RightsOfPrograms : public testing::TestWithParam<const char*> {};

constexpr char kLost[] =
    "orblink-vboard: without CAP_SYS_ADMIN, programs on the board have no set-user-id rights and "
    "no file capabilities on this machine\n";

TEST_P(RightsOfPrograms, OfAnOrdinaryUserAreLostAndThatIsSaid)
{
    const auto drop = AsOrdinaryUser();
    if (!drop)
        GTEST_SKIP() << "the build tree is closed to user 65534";
    const std::string run =
        *drop + "$RUN --isolation " + GetParam() + " --board $BOARDS/no_devices.toml -- ";
    if (Shell(run + "true").status != 0)
        GTEST_SKIP() << "namespaces are not allowed here";
    auto outcome = Shell(run + "echo begun");
    EXPECT_THAT(outcome.output, EndsWith(std::string(kLost) + "begun\n"));
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(All, RightsOfPrograms, testing::Values("namespaces", "names"),
                         [](const auto& test) { return std::string(test.param); });

TEST(Limits, AnUndumpableProgramCannotUseTheBoardAndThatIsSaidOnce)
{
    const auto drop = AsOrdinaryUser();
    if (!drop)
        GTEST_SKIP() << "the build tree is closed to user 65534";
    auto outcome =
        Shell(*drop +
              "$RUN --isolation names --board $BOARDS/two_switches.toml -- sh -c '"
              "$CLIENT undumpable mii nsgmii0 0 9 2\n"
              "$CLIENT undumpable lane 3\n"
              "$CLIENT undumpable gmac nsgmii0 nsgmii0 55 4 1\n"
              "$CLIENT mii nsgmii0 0 9 2\n"
              "$VBOARD control journal --kind gmac' 2>&1 | sed 's/process [0-9]*/process N/'");
    EXPECT_EQ(Printed(outcome),
              "orblink-vboard: the memory of process N (vboard_client) cannot be read: it is "
              "undumpable, and cannot use the board\n"
              "ioctl: EPERM\nopen: ENOENT\nioctl: EPERM\n0xffff\n");
}

}  // namespace
}  // namespace vboard_test
