#include "tests/robustness/faulty_run.h"

#include <map>
#include <sstream>

#include "tests/robustness/child.h"
#include "tests/robustness/scripted_board.h"
#include "tests/support/private_names.h"

namespace obtest {
namespace {

// The name by which a call is made to fail; empty for what is no system call.
std::string SystemCall(const std::string& line)
{
    for (const char* kind : {"sys ", "wait "}) {
        const std::string word(kind);
        if (line.rfind(word, 0) != 0)
            continue;
        const std::string call = line.substr(word.size(), line.find('(') - word.size());
        return call == "write" ? "fwrite" : call;
    }
    return "";
}

// A process that must not wait for a lock that nobody is going to release.
bool WouldWait(const FaultScenario& scenario)
{
    return scenario.family != Family::kNone && LockValue(scenario.family) == 0 &&
           scenario.before != Before::kNothing;
}

std::string Describe(const FaultScenario& scenario, const Fault& fault)
{
    if (scenario.before == Before::kAttached) {
        uint8_t count = 0;
        ORBLINK_GetNumOfSwitches(&count);
        ETHPHY_GetNumOfPhys(&count);
    }
    Platform().transcript.Clear();
    const int before = OpenDescriptors();
    if (!fault.call.empty())
        Platform().Fail(fault.call, fault.errorNumber, fault.nth);
    std::ostringstream text;
    text << scenario.run() << '\n';
    const Lines lines = Platform().transcript.All();
    text << OpenDescriptors() - before << '\n';
    text << (scenario.family == Family::kNone ? 1 : LockValue(scenario.family)) << '\n';
    text << (WouldWait(scenario) ? kNotTried : scenario.run()) << '\n';
    text << OpenDescriptors() - before << '\n' << Joined(lines);
    return text.str();
}

FaultyRun Parsed(const Ended& ended)
{
    FaultyRun run;
    std::istringstream text(ended.text);
    run.ended = ended.inTime && ended.signal == 0 &&
                (text >> run.result >> run.opened >> run.lock >> run.again >> run.openedAgain);
    text.ignore(1);
    for (std::string line; std::getline(text, line);)
        run.transcript.push_back(line);
    return run;
}

}  // namespace

FaultyRun RunOnce(const FaultScenario& scenario, const Fault& fault)
{
    RemovePrivateNames();
    ScriptBoard();
    if (scenario.before != Before::kNothing)
        for (Family family : {Family::kSwitch, Family::kPhy})
            EXPECT_EQ(InChild([=] { return std::to_string(Initialise(family)); }).text, "0");
    FaultyRun run =
        Parsed(InChild([&] { return Describe(scenario, fault); }, 5000, Exit::kMeasured));
    run.lockAfterExit = scenario.family == Family::kNone ? 1 : LockValue(scenario.family);
    return run;
}

std::vector<CallSite> CallSites(const Lines& transcript)
{
    std::vector<CallSite> sites;
    std::map<std::string, int> made;
    for (const std::string& line : transcript)
        if (const std::string call = SystemCall(line); !call.empty())
            sites.push_back({call, ++made[call]});
    return sites;
}

}  // namespace obtest
