// Signals at any moment: the waits of a bring-up, and every operation.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "tests/robustness/child.h"
#include "tests/robustness/effort.h"
#include "tests/robustness/scripted_board.h"
#include "tests/support/private_names.h"

using namespace obtest;

namespace {

volatile sig_atomic_t signals;

// A timer that signals so many times a second; 0 stops it.
void SignalAt(int hertz, bool restart)
{
    struct sigaction action = {};
    action.sa_handler = [](int) { signals = signals + 1; };
    action.sa_flags = restart ? SA_RESTART : 0;
    sigaction(SIGALRM, &action, nullptr);
    itimerval interval = {};
    if (hertz == 1)
        interval.it_interval.tv_sec = interval.it_value.tv_sec = 1;
    else if (hertz > 1)
        interval.it_interval.tv_usec = interval.it_value.tv_usec = 1000000 / hertz;
    setitimer(ITIMER_REAL, &interval, nullptr);
}

double Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

struct Rate {
    int hertz;
    bool restart;
};

constexpr Rate kRates[] = {{1, false},  {1, true},  {4, false},    {4, true},
                           {10, false}, {10, true}, {1000, false}, {1000, true}};

// A board of its own for each: all of them wait at the same time.
std::string TimeOf(Family family, const Rate& rate)
{
    unsetenv("ORBLINK_TEST_NAMES");
    if (!TakePrivateNames() || Initialise(family) != 0)
        return "not initialised";
    Platform().mii = [](unsigned long, MiiWords& words) {
        words.valueOut = 0x0022;
        return true;
    };
    Platform().realWaits = true;
    SignalAt(rate.hertz, rate.restart);
    const double begin = Now();
    const int result = family == Family::kSwitch ? ORBLINK_ResetDisable(0, 1, nullptr, 0)
                                                 : ETHPHY_ResetDisable(0, 1);
    const double took = Now() - begin;
    SignalAt(0, false);
    const bool signalled = rate.hertz == 1 && family == Family::kPhy ? true : signals > 0;
    std::ostringstream text;
    text << took;
    return result != 0 ? "failed" : !signalled ? "no signal" : text.str();
}

struct Limits {
    double least, most;
};

std::string Judged(const std::string& took, const Limits& limits)
{
    char* end = nullptr;
    const double seconds = strtod(took.c_str(), &end);
    if (end == took.c_str())
        return took;
    return seconds < limits.least  ? "too short: " + took
           : seconds > limits.most ? "too long: " + took
                                   : "";
}

// All rates at once; what was too long on a busy machine gets a second chance.
void ExpectWithin(Family family, const Limits& limits)
{
    std::vector<std::unique_ptr<Background>> waiting;
    std::vector<std::string> files;
    for (const Rate& rate : kRates) {
        char name[] = "/tmp/orblink-wait-XXXXXX";
        close(mkstemp(name));
        files.push_back(name);
        waiting.push_back(std::make_unique<Background>([&, file = files.back()] {
            const std::string took = TimeOf(family, rate);
            FILE* const out = fopen(file.c_str(), "w");
            fputs(took.c_str(), out);
            fclose(out);
        }));
    }
    for (size_t i = 0; i < std::size(kRates); ++i) {
        const Rate& rate = kRates[i];
        SCOPED_TRACE(std::to_string(rate.hertz) + (rate.restart ? " Hz, SA_RESTART" : " Hz"));
        EXPECT_TRUE(waiting[i]->Succeeds(20000));
        char took[64] = {};
        FILE* const in = fopen(files[i].c_str(), "r");
        EXPECT_NE(fgets(took, sizeof(took), in), nullptr);
        fclose(in);
        remove(files[i].c_str());
        std::string verdict = Judged(took, limits);
        if (verdict.rfind("too long", 0) == 0)
            verdict = Judged(InChild([&] { return TimeOf(family, rate); }).text, limits);
        EXPECT_EQ(verdict, "");
        printf("| %s under %d Hz%s | %s s |\n",
               family == Family::kSwitch ? "ORBLINK_ResetDisable" : "ETHPHY_ResetDisable",
               rate.hertz, rate.restart ? ", SA_RESTART" : "", took);
    }
}

TEST(WaitsUnderSignals, TheResetPulseOfASwitchTakesItsTime)
{
    ExpectWithin(Family::kSwitch, {3.2, 3.6});
}

TEST(WaitsUnderSignals, TheResetPulseOfAPhyTakesItsTime)
{
    ExpectWithin(Family::kPhy, {0.4, 0.6});
}

// What a process has room for of regions that are mapped: each keeps a descriptor, and a mapping, of
// which there are 65530. Half of what is left, so that another call finds the other half.
class Room {
public:
    bool IsLeft() const { return NextDescriptor() < end_; }

private:
    static int NextDescriptor()
    {
        const int descriptor = open("/dev/null", O_RDONLY);
        close(descriptor);
        return descriptor;
    }

    static int End()
    {
        rlimit limit = {};
        getrlimit(RLIMIT_NOFILE, &limit);
        const int next = NextDescriptor();
        return next + (static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 60'000)) - next) / 2;
    }

    int end_ = End();
};

// Without anybody else at the lock no call is ever cut short.
class SignalStorm : public testing::TestWithParam<Family> {
protected:
    static int Milliseconds() { return Thorough() ? 500 : 10; }

    // How often the call failed, in the time; each on the board as it was at first.
    int Failures(const ExportedCall& call)
    {
        if (call.prepare != nullptr)
            call.prepare();
        const SwitchDeviceRegion switches = Region();
        const PhyDeviceRegion phys = PhyRegion();
        const int expected = call.run();
        int failures = 0;
        const Room room;
        for (const double end = Now() + Milliseconds() / 1e3; Now() < end && room.IsLeft();
             ++calls) {
            memcpy(&Region(), &switches, sizeof(switches));
            memcpy(&PhyRegion(), &phys, sizeof(phys));
            failures += call.run() != expected ? 1 : 0;
        }
        return failures;
    }

    int calls = 0;
};

TEST_P(SignalStorm, ChangesNoResultAndKeepsNoLock)
{
    InitialiseElsewhere();
    Platform().transcript.quiet = true;
    const SwitchDeviceRegion switches = Region();
    const PhyDeviceRegion phys = PhyRegion();
    SignalAt(1000, false);
    for (const ExportedCall& call : CallsOf(GetParam())) {
        memcpy(&Region(), &switches, sizeof(switches));
        memcpy(&PhyRegion(), &phys, sizeof(phys));
        EXPECT_EQ(Failures(call), 0) << call.name;
    }
    SignalAt(0, false);
    EXPECT_GT(signals, 50);
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
    EXPECT_EQ(LockValue(Family::kPhy), 1);
    printf("| 1 kHz storm | %d calls, %d signals |\n", calls, static_cast<int>(signals));
}

INSTANTIATE_TEST_SUITE_P(Every, SignalStorm,
                         testing::Values(Family::kSwitch, Family::kPhy, Family::kNone),
                         [](const auto& info) {
                             return std::string(info.param == Family::kSwitch ? "SwitchCall"
                                                : info.param == Family::kPhy  ? "PhyCall"
                                                                              : "Service");
                         });

}  // namespace
