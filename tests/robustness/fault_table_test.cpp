// Each system call at each of its call sites fails once with each error of its manual page.
#include <algorithm>
#include <cstring>
#include <map>
#include <ostream>
#include <set>

#include "tests/robustness/child.h"
#include "tests/robustness/error_numbers.h"
#include "tests/robustness/faulty_run.h"
#include "tests/robustness/scripted_board.h"
#include "tests/support/private_names.h"

using namespace obtest;
using testing::ElementsAreArray;

namespace obtest {

void PrintTo(const FaultScenario& scenario, std::ostream* out)
{
    *out << scenario.name;
}

}  // namespace obtest

namespace {

// Calls whose failure changes nothing, wherever they are made: what was to be closed is closed, a
// descriptor without close-on-exec serves as well, and a wait that fails is over.
bool IsHarmless(const std::string& call)
{
    static const std::set<std::string> calls = {"close", "fcntl", "fstat", "sleep", "usleep"};
    return calls.count(call) != 0;
}

bool IsError(const std::string& line)
{
    return line.rfind("log1 ", 0) == 0 || line.rfind("phy1 ", 0) == 0;
}

void Replace(std::string& line, const std::string& mark, const std::string& text)
{
    if (const size_t at = line.find(mark); at != std::string::npos)
        line.replace(at, mark.size(), text);
}

Lines WithNumber(Lines lines, int number)
{
    for (std::string& line : lines) {
        Replace(line, "{e}", std::to_string(number));
        Replace(line, "{t}", strerror(number));
    }
    return lines;
}

class FaultTable : public testing::TestWithParam<FaultScenario> {
protected:
    const FaultScenario& scenario = GetParam();
    const FaultyRun healthy = RunOnce(scenario, {});

    // Lines of severity 1 that the healthy run does not have.
    Lines Errors(const FaultyRun& run) const
    {
        Lines errors;
        for (const std::string& line : run.transcript)
            if (IsError(line) &&
                std::count(healthy.transcript.begin(), healthy.transcript.end(), line) == 0)
                errors.push_back(line);
        return errors;
    }

    const FaultRow* RowOf(const CallSite& site) const
    {
        for (const FaultRow& row : scenario.rows)
            if (row.call == site.call && row.nth == site.nth)
                return &row;
        return nullptr;
    }

    void ExpectAsHealthy(const CallSite& site, int number)
    {
        const FaultyRun run = RunOnce(scenario, {site.call, site.nth, number});
        ASSERT_TRUE(run.ended);
        EXPECT_EQ(run.result, healthy.result);
        EXPECT_THAT(Errors(run), testing::IsEmpty());
        EXPECT_EQ(run.lock, healthy.lock);
        EXPECT_EQ(run.again, healthy.again);
        EXPECT_EQ(run.openedAgain, healthy.openedAgain);
    }

    // The process attaches anew; the region that it had stays, other threads may be using it.
    bool LosesTheSet(const FaultRow& row, int number) const
    {
        return scenario.before == Before::kAttached && std::string(row.call) == "semop" &&
               (number == EINVAL || number == EIDRM);
    }

    void ExpectRow(const FaultRow& row, int number)
    {
        const FaultyRun run = RunOnce(scenario, {row.call, row.nth, number});
        ASSERT_TRUE(run.ended);
        EXPECT_EQ(run.result, row.result);
        EXPECT_THAT(Errors(run), ElementsAreArray(WithNumber(row.errors, number)));
        EXPECT_THAT(Joined(run.transcript),
                    testing::HasSubstr(WithNumber({row.printed}, number)[0]));
        EXPECT_EQ(run.lock, row.lock);
        EXPECT_EQ(run.again, row.again);
        EXPECT_LE(run.opened, healthy.opened + row.leftOpen);
        if (row.again == 0)
            EXPECT_EQ(run.openedAgain,
                      healthy.openedAgain + row.leftOpen + (LosesTheSet(row, number) ? 1 : 0));
        EXPECT_EQ(run.lockAfterExit, row.lockAfterExit);
    }
};

TEST_P(FaultTable, HealthyRunSucceeds)
{
    ASSERT_TRUE(healthy.ended);
    EXPECT_EQ(healthy.lock, 1);
}

TEST_P(FaultTable, HasARowForEachCallSiteAndNoOther)
{
    const std::vector<CallSite> sites = CallSites(healthy.transcript);
    std::set<std::pair<std::string, int>> made;
    for (const CallSite& site : sites) {
        made.insert({site.call, site.nth});
        EXPECT_TRUE(IsHarmless(site.call) || RowOf(site) != nullptr)
            << "no row for " << site.call << " " << site.nth;
    }
    for (const FaultRow& row : scenario.rows)
        EXPECT_EQ(made.count({row.call, row.nth}), 1U)
            << "no call site for " << row.call << " " << row.nth;
}

TEST_P(FaultTable, HoldsForEachErrorAtEachCallSite)
{
    for (const CallSite& site : CallSites(healthy.transcript)) {
        for (const int number : ErrorNumbersOf(site.call)) {
            SCOPED_TRACE(site.call + " " + std::to_string(site.nth) + ", error " +
                         std::to_string(number));
            if (const FaultRow* row = RowOf(site))
                ExpectRow(*row, number);
            else
                ExpectAsHealthy(site, number);
        }
    }
}

// Once a process has attached, an operation makes the two calls of its lock wherever else it goes.
// The table goes through all errors; here an interrupted call and a removed set stand for them.
class LockFault : public testing::TestWithParam<ExportedCall> {
protected:
    // Only the service flag's getter has no result to tell a failure by.
    int FailureOf(const ExportedCall& call)
    {
        return std::string(call.name) == "ORBLINK_IsOrbLinkServiceOn" ? 0 : -1;
    }

    FaultyRun Run(const Fault& fault)
    {
        return RunOnce({call.name, call.family, Before::kAttached, call.run, {}}, fault);
    }

    const ExportedCall& call = GetParam();
    const std::vector<int> numbers = {EINTR, EIDRM};
};

bool Has(const Lines& lines, const std::string& text)
{
    return Joined(lines).find(text) != std::string::npos;
}

TEST_P(LockFault, RefusesTheCallWithoutTouchingTheChip)
{
    for (const int number : numbers) {
        SCOPED_TRACE(number);
        const FaultyRun run = Run({"semop", 1, number});
        ASSERT_TRUE(run.ended);
        EXPECT_EQ(run.result, FailureOf(call));
        EXPECT_TRUE(Has(run.transcript, "semop() fail, errno=" + std::to_string(number)));
        EXPECT_FALSE(Has(run.transcript, "hal")) << Joined(run.transcript);
        EXPECT_EQ(run.lock, 1);
        EXPECT_EQ(run.again, Run({}).result);
    }
}

TEST_P(LockFault, OfTheReleaseKeepsTheResult)
{
    const FaultyRun healthy = Run({});
    for (const int number : numbers) {
        SCOPED_TRACE(number);
        const FaultyRun run = Run({"semop", 2, number});
        ASSERT_TRUE(run.ended);
        EXPECT_EQ(run.result, healthy.result);
        EXPECT_TRUE(Has(run.transcript, "semop() fail, errno=" + std::to_string(number)));
        EXPECT_EQ(run.opened, healthy.opened);
        EXPECT_EQ(run.lock, 0);
        // The kernel gives the switch family's lock back; the PHY family does without that.
        EXPECT_EQ(run.lockAfterExit, call.family == Family::kSwitch ? 1 : 0);
    }
}

// All but the one that makes four calls, each under the lock.
std::vector<ExportedCall> CallsUnderOneLock()
{
    std::vector<ExportedCall> calls = CallsOf(Family::kSwitch);
    for (const ExportedCall& call : CallsOf(Family::kPhy))
        if (std::string(call.name) != "ETHPHY_PhyZ88_SetSpeedDuplexMode")
            calls.push_back(call);
    return calls;
}

// The loader may fail and have nothing to say.
class SpeechlessLoader : public testing::TestWithParam<std::tuple<Family, const char*>> {};

TEST_P(SpeechlessLoader, IsToldWithoutItsReason)
{
    const auto [family, call] = GetParam();
    RemovePrivateNames();
    const Ended ended = InChild([&, family = family, call = call] {
        Platform().Fail(call, ENOMEM);
        Platform().Fail("dlerror", 0);
        Initialise(family);
        return Joined(Platform().transcript.All());
    });
    ASSERT_EQ(ended.signal, 0);
    const std::string end = std::string(call) == "dlopen" ? "errno=12, . Check SDK compilation "
                                                            "options.\n"
                                                          : "errno=12. \n";
    EXPECT_THAT(ended.text, testing::HasSubstr(std::string(call) + " failed, "));
    EXPECT_THAT(ended.text, testing::HasSubstr(end));
    EXPECT_EQ(LockValue(family), 1);
}

INSTANTIATE_TEST_SUITE_P(Library, SpeechlessLoader,
                         testing::Combine(testing::Values(Family::kSwitch, Family::kPhy),
                                          testing::Values("dlopen", "dlsym")),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param) == Family::kSwitch
                                                    ? "Switch"
                                                    : "Phy") +
                                    std::get<1>(info.param);
                         });

std::string NameOf(const testing::TestParamInfo<FaultScenario>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Library, LockFault, testing::ValuesIn(CallsUnderOneLock()),
                         [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(Switch, FaultTable, testing::ValuesIn(SwitchFaults()), NameOf);
INSTANTIATE_TEST_SUITE_P(Phy, FaultTable, testing::ValuesIn(PhyFaults()), NameOf);
INSTANTIATE_TEST_SUITE_P(Mailbox, FaultTable, testing::ValuesIn(MailboxFaults()), NameOf);

}  // namespace
