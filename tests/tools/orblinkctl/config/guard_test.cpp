// Changes that are taken back unless somebody confirms them in time.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::AllOf;
using testing::HasSubstr;

const std::string kMakeFile =
    "ctl port 1 vlan 100 >/dev/null; ctl config save new; ctl port 1 vlan 1 >/dev/null";
const std::string kShow = "ctl port 1 vlan -o kv | grep '[.]vlan='";

std::string Until(const std::string& condition)
{
    return "timeout 10 sh -c 'until " + condition + "; do sleep 0.02; done'";
}

const std::string kPending = "orblinkctl config pending | grep -q \"is taken back in\"";
const std::string kSettled = "orblinkctl config pending | grep -q \"no change waits\"";

// Starts an apply that waits; the process is in the file "pid".
std::string Start(const std::string& seconds, const std::string& file = "new")
{
    return "orblinkctl config apply " + file + " --confirm-within " + seconds +
           " >said 2>complained & echo $! >pid; " + Until(kPending);
}

TEST(Guard, KeepsWhatIsConfirmedElsewhere)
{
    const auto r = OnBoardUp(
        "one_switch", {kMakeFile, Start("60"), kShow, "ctl config confirm", Until(kSettled), kShow,
                       "cat said", "ctl config confirm", "ctl config rollback"});
    EXPECT_THAT(r[1], Succeeds());
    EXPECT_THAT(r[2], Prints("ports.0.vlan=100\n"));
    EXPECT_THAT(r[3], Prints("the changes were kept\n"));
    EXPECT_THAT(r[5], Prints("ports.0.vlan=100\n"));
    EXPECT_THAT(r[6].out,
                AllOf(HasSubstr("switch.0.port.1.vlan"),
                      HasSubstr("To keep the changes, press Enter or run 'orblinkctl config "
                                "confirm' within 60 s.\n"),
                      HasSubstr("done: port 0:1 vlan 100\n")));
    EXPECT_THAT(r[7], Refuses(3, "no change waits for its confirmation"));
    EXPECT_THAT(r[8], Refuses(3, "no change waits for its confirmation"));
}

TEST(Guard, ShowsWhatIsPendingAndRefusesAnotherChange)
{
    const auto r =
        OnBoardUp("one_switch", {kMakeFile, Start("60"), "ctl --json config pending",
                                 "ctl config apply new", "ctl config rollback", kShow, "cat said"});
    const auto pending = Json(r[2])["pending"];
    EXPECT_THAT(pending["file"], testing::EndsWith("/new"));
    EXPECT_LE(pending["seconds_left"], 60);
    EXPECT_GE(pending["seconds_left"], 40);
    EXPECT_EQ(pending["differences"][0]["wanted"], 100);
    EXPECT_THAT(r[3], Refuses(5,
                              "another change waits for its confirmation: orblinkctl config "
                              "confirm, or orblinkctl config rollback"));
    EXPECT_THAT(r[4], Prints("the changes were taken back\n"));
    EXPECT_THAT(r[5], Prints("ports.0.vlan=1\n"));
    EXPECT_THAT(r[6].out, HasSubstr("not confirmed: the changes were taken back\n"));
}

TEST(Guard, TakesBackWhenNobodyAnswers)
{
    const auto r = OnBoardUp("one_switch",
                             {kMakeFile, "ctl config apply new --confirm-within 0.2", kShow,
                              "echo | ctl config apply new --confirm-within 60 >/dev/null", kShow});
    EXPECT_EQ(r[1].code, 1);
    EXPECT_THAT(r[1].out, HasSubstr("not confirmed: the changes were taken back\n"));
    EXPECT_THAT(r[2], Prints("ports.0.vlan=1\n"));
    EXPECT_THAT(r[3], Succeeds());
    EXPECT_THAT(r[4], Prints("ports.0.vlan=100\n"));
}

class GuardDeath : public testing::TestWithParam<const char*> {};

TEST_P(GuardDeath, OfTheCallerTakesTheChangesBack)
{
    const auto r = OnBoardUp(
        "one_switch",
        {kMakeFile, Start("60"), kShow, std::string("kill -") + GetParam() + " $(cat pid)",
         Until(kSettled), kShow, Until("! kill -0 $(cat pid) 2>/dev/null")});
    EXPECT_THAT(r[2], Prints("ports.0.vlan=100\n"));
    EXPECT_THAT(r[4], Succeeds());
    EXPECT_THAT(r[5], Prints("ports.0.vlan=1\n"));
    EXPECT_EQ(r[6].code, 0) << "the caller goes on";
}

INSTANTIATE_TEST_SUITE_P(Signals, GuardDeath, testing::Values("INT", "TERM", "HUP", "KILL"));

TEST(Guard, AClosedTerminalTakesTheChangesBack)
{
    const auto r = OnBoardUp(
        "one_switch",
        {kMakeFile,
         "setsid script -qfc 'orblinkctl config apply new --confirm-within 60' said >/dev/null & "
         "echo $! >terminal; " +
             Until(kPending),
         kShow, "kill -KILL $(cat terminal)", Until(kSettled), kShow});
    EXPECT_EQ(r[1].code, 0) << r[1].err;
    EXPECT_THAT(r[2], Prints("ports.0.vlan=100\n"));
    EXPECT_THAT(r[4], Succeeds());
    EXPECT_THAT(r[5], Prints("ports.0.vlan=1\n"));
}

// Its own number comes from a caller that is long gone; other tests have guards, too.
TEST(Guard, AKilledGuardDoesNotBlockTheNextChange)
{
    const auto r = OnBoardUp(
        "one_switch", {kMakeFile + "; cp new $(basename $PWD)", Start("60", "$(basename $PWD)"),
                       "kill -KILL $(pgrep -f \"config apply $(basename $PWD)\" | "
                       "grep -vx $(cat pid))",
                       Until("! kill -0 $(cat pid) 2>/dev/null"), "cat complained",
                       "ctl config apply new", "ctl config pending"});
    EXPECT_THAT(r[4].out, HasSubstr("the guarding process has ended"));
    EXPECT_THAT(r[5], Prints("nothing to do\n"));
    EXPECT_THAT(r[6], Prints("no change waits for its confirmation\n"));
}

}  // namespace
}  // namespace onboard
