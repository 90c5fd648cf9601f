// The library itself on the board: what each fault makes of an initialisation or a bring-up.

#include <gmock/gmock.h>

#include "tests/virtual_board/program/vboard_process.h"

namespace vboard_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

Outcome WithLibrary(const std::string& board, const std::string& script)
{
    return OnBoard(board, "CTL=$(dirname $VBOARD)/orblinkctl\n" + script, "--time-scale 0.001");
}

TEST(Library, InitialisesBothFamiliesAndBringsAllUp)
{
    auto outcome = WithLibrary("phy.toml",
                               "$CTL init >/dev/null && $CTL up 0 --defaults && $CTL phy 0 up && "
                               "$CTL phy 1 up && $VBOARD control state\n");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("mailbox: switch=acknowledged phy=acknowledged\n"),
                      HasSubstr("reset: released\n"), HasSubstr("laneResets: 3=2 4=0 5=0 6=0\n")));
}

TEST(Library, WaitsForAMailboxThatIsNotUp)
{
    auto outcome = WithLibrary("one_switch.toml",
                               "$VBOARD control fault mailbox-down --times 11\n"
                               "$VBOARD control fault app-cpu-down --times 2\n"
                               "$CTL init\n"
                               "$VBOARD control journal --kind mailbox\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("switch family: 1 found\n"),
                                      HasSubstr("socket type=1 -> ENETDOWN\n"),
                                      HasSubstr("bind family=43 mid=0 appid=12 -> EHOSTDOWN\n")));
}

constexpr char kNoSwitches[] = "the switch family is initialised, but without devices";
constexpr char kNoPhys[] = "the PHY family is initialised, but without devices";

struct Broken {
    const char* fault;
    const char* message;
};
void PrintTo(const Broken& broken, std::ostream* out)
{
    *out << broken.fault;
}

class BrokenBoardData : public testing::TestWithParam<Broken> {};

TEST_P(BrokenBoardData, LeavesTheFamilyWithoutDevices)
{
    auto outcome = WithLibrary(
        "phy.toml", std::string("$VBOARD control fault ") + GetParam().fault + "\n$CTL init\n");
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(All, BrokenBoardData,
                         testing::ValuesIn(std::vector<Broken>{
                             {"message-type 11", kNoSwitches},
                             {"message-type 12", kNoSwitches},
                             {"payload-length 175", kNoSwitches},
                             {"payload-length 119 --at 2", kNoPhys},
                             {"device-count 3", kNoSwitches},
                             {"message-size 8",
                              "switch family: 0 found: the board data name none\n"
                              "phy family: 2 found\n"},
                             {"bind-error", kNoSwitches},
                             {"receive-error ETIMEDOUT", kNoSwitches}}));

class BrokenBringUp : public testing::TestWithParam<Broken> {};

TEST_P(BrokenBringUp, FailsWithTheMessage)
{
    auto outcome = WithLibrary("one_switch.toml", std::string("$CTL init >/dev/null\n"
                                                              "$VBOARD control ") +
                                                      GetParam().fault + "\n$CTL -v up 0\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(All, BrokenBringUp,
                         testing::ValuesIn(std::vector<Broken>{
                             {"battery on", "Modem in battery mode - skipping ResetDisable 0"},
                             {"fault attr-open --at 2", "Failed to open attribute"},
                             {"fault attr-error --at 2", "Failed to reset"},
                             {"fault mdio-error --at 30", "ioctl failed, errno=5, DevIdx=0"},
                             {"fault lane-open", "open error, errno=2"},
                             {"fault lane-error", "ioctl error, errno=5"}}));

// All that the bring-up needs: later failures, of single ports, are only logged.
TEST(Library, AnyMdioAccessOfABringUpMayFail)
{
    auto outcome = WithLibrary("one_switch.toml",
                               "$CTL init >/dev/null\n"
                               "for i in 1 2 3 5 8 13 21 34; do\n"
                               "  $VBOARD control fault mdio-error --at $i\n"
                               "  $CTL up 0 >/dev/null 2>&1 && echo up at $i\n"
                               "  $VBOARD control fault clear\n"
                               "  $CTL down 0 >/dev/null\n"
                               "done\n"
                               "$CTL up 0\n");
    EXPECT_EQ(Printed(outcome), "switch 0: state enabled\n");
}

}  // namespace
}  // namespace vboard_test
