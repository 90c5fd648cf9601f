// Options, exit codes and the forms of the report.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/orblink_hal_check/checked.h"

using namespace checked;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string kFaulty = "libfaulty_switch_hal.so";

std::string OneFault(const std::string& form)
{
    return form + " --slot GetEeePortState " + Planted(kFaulty);
}

}  // namespace

TEST(HalCheckProgram, RefusesWhatItDoesNotKnow)
{
    EXPECT_EQ(RunCheck("").code, 2);
    EXPECT_EQ(RunCheck("--unknown x.so").code, 2);
    EXPECT_EQ(RunCheck("--json --tap x.so").code, 2);
    EXPECT_EQ(RunCheck("--slot NoSlot x.so").err,
              "orblink-hal-check: --slot: 'NoSlot' is no slot\n");
    EXPECT_EQ(RunCheck("--ignore no.check x.so").code, 2);
}

TEST(HalCheckProgram, SaysWhatCannotBeLoaded)
{
    const std::string name = "orblink-hal-check: ";
    Outcome outcome = RunCheck("/nowhere/x.so");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.err, name + "/nowhere/x.so: there is no such library\n");
    outcome = RunCheck(ORBLINK_SOURCE "/README.md");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.err, name + ORBLINK_SOURCE "/README.md: it is no shared library\n");
    outcome = RunCheck(Built("lib/libobplatform.so.0"));
    EXPECT_EQ(outcome.code, 3);
    EXPECT_THAT(outcome.err, HasSubstr("it has neither OBHAL_HalFuncs nor ETHPHY_HalFuncs"));
}

TEST(HalCheckProgram, SaysWhatIsWrongWithABoard)
{
    Outcome outcome = RunCheck(Planted(kFaulty) + " --board " ORBLINK_SOURCE
                                                  "/virtual_board/boards/no_devices.toml");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_THAT(outcome.err, HasSubstr("has no device for this library"));
    outcome = RunCheck(Planted(kFaulty) + " --board /dev/null");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.err, "orblink-hal-check: /dev/null is no board file\n");
}

TEST(HalCheckProgram, IgnoresWhatItIsToldTo)
{
    EXPECT_EQ(RunCheck(OneFault("--ignore result.not-filled"), "forgets-result").code, 0);
}

TEST(HalCheckProgram, ReportsTextOfEightyColumns)
{
    const Outcome outcome = RunCheck(OneFault(""), "forgets-result");
    EXPECT_EQ(outcome.code, 1);
    // Behind a path, as long as it is.
    EXPECT_THAT(outcome.out, ContainsRegex("switch[ \n]HAL,[ \n]1[ \n]finding\n"));
    EXPECT_THAT(outcome.out,
                HasSubstr("\nresult.not-filled  GetEeePortState\n"
                          "    a slot succeeded and left its result unwritten:\n"
                          "    GetEeePortState(0, 1, buffer) succeeded and wrote nothing"));
    std::istringstream lines{outcome.out};
    std::string line;
    std::getline(lines, line);  // with the path as it was given
    for (; std::getline(lines, line);)
        EXPECT_LE(line.size(), 80U) << line;
}

TEST(HalCheckProgram, ReportsTimesAndAccessesOfEachSlot)
{
    const auto json =
        nlohmann::json::parse(RunCheck("--json " + Built("lib/liborblink_velmar.so")).out);
    EXPECT_EQ(json.at("schema"), 1);
    ASSERT_EQ(json.at("slots").size(), 42U);
    const auto& counters = json.at("slots").at(10);
    EXPECT_EQ(counters.at("slot"), "GetPortCounters");
    // An address, a command, its end, another address and 120 words.
    EXPECT_GE(counters.at("accesses"), 123);
    // Each access to a register takes its time.
    EXPECT_GT(json.at("slots").at(1).at("microseconds"), 0);
}

TEST(HalCheckProgram, ReportsTap)
{
    const Outcome outcome = RunCheck(OneFault("--tap"), "forgets-result");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.out, StartsWith("TAP version 13\n1..37\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\nok 1 - library.name-too-long\n"));
    EXPECT_THAT(outcome.out, HasSubstr(" - result.not-filled\n  ---\n  findings:\n"
                                       "    - slot: \"GetEeePortState\"\n"));
    EXPECT_THAT(RunCheck("--tap " + Planted("libfaulty_phy_hal.so")).out,
                HasSubstr(" - walk.context # SKIP no switch table\n"));
}

TEST(HalCheckProgram, ReportsJunitThatIsEscaped)
{
    const Outcome outcome = RunCheck(OneFault("--junit"), "forgets-result");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.out, StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"));
    EXPECT_THAT(outcome.out, HasSubstr("tests=\"37\" failures=\"1\" skipped=\"0\""));
    EXPECT_THAT(outcome.out, HasSubstr("<failure message=\"a slot succeeded and left its result "
                                       "unwritten\" type=\"GetEeePortState\">"));
}

TEST(HalCheckProgram, SaysThatNobodyCanReadTheReport)
{
    for (const std::string& wish :
         {OneFault(""), OneFault("--json"), OneFault("--tap"), OneFault("--junit"),
          std::string("--list"), std::string("--help")}) {
        const Outcome outcome = RunCheck(wish, "", ">/dev/full");
        EXPECT_EQ(outcome.code, 3) << wish;
        EXPECT_EQ(outcome.err,
                  "orblink-hal-check: cannot write the output: No space left on device\n");
    }
}

TEST(HalCheckProgram, FindsTheSameWithClosedStreams)
{
    for (const char* const streams : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
        EXPECT_EQ(RunCheck(OneFault(""), "forgets-result", streams).code, 1) << streams;
        EXPECT_EQ(RunCheck(OneFault(""), "", streams).code, 0) << streams;
    }
}

TEST(HalCheckProgram, LeavesNothingBehind)
{
    std::string folder = "/tmp/orblink-hal-check-test.XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    ASSERT_EQ(setenv("TMPDIR", folder.c_str(), 1), 0);
    EXPECT_EQ(RunCheck(OneFault("")).code, 0);
    EXPECT_EQ(rmdir(folder.c_str()), 0);
}
