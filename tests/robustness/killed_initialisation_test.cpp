// An initialisation that dies at each of its points: what others get, and what mends it.
#include <cstdio>
#include <map>

#include "tests/robustness/child.h"
#include "tests/robustness/death.h"
#include "tests/robustness/effort.h"
#include "tests/robustness/recovery.h"
#include "tests/robustness/scripted_board.h"
#include "tests/support/private_names.h"

using namespace obtest;

namespace {

void Nothing() {}

// A lock that nobody is going to release is waited for in vain, however long; here it is not long.
std::string DevicesSeen(Family family)
{
    const int patience = LockValue(family) == 0 ? 100 : 10000;
    const Ended ended = InChild(
        [=] {
            uint8_t count = 255;
            const int result = family == Family::kSwitch ? ORBLINK_GetNumOfSwitches(&count)
                                                         : ETHPHY_GetNumOfPhys(&count);
            return result == 0 ? std::to_string(count) + " devices" : "fails";
        },
        patience);
    return ended.inTime ? ended.text : "waits for ever";
}

std::string InitialiseAgain(Family family)
{
    return InChild([=] { return std::string(Initialise(family) == 0 ? "done" : "refused"); }).text;
}

// Most points leave what the one before leaves: few of the later ones are tried among other tests.
std::vector<size_t> Tried(size_t points)
{
    constexpr size_t kFirst = 9;
    constexpr size_t kEach = 30;
    std::vector<size_t> tried;
    for (size_t at = 0; at < points; ++at)
        if (Thorough() || at < kFirst || at % kEach == 0 || at + 1 == points)
            tried.push_back(at);
    return tried;
}

// What a death leaves. Points that leave the same belong together.
struct Remains {
    int lock = -1;
    std::string others = {};
    std::string again = {};
    std::string mends = {};

    bool operator==(const Remains& other) const = default;
};

class KilledInitialisation : public testing::TestWithParam<Family> {
protected:
    KilledInitialisation() { ScriptBoard(); }

    void Kill(size_t at)
    {
        RemovePrivateNames();
        const bool died = DiesAt(static_cast<int>(at), Nothing, [this] { Initialise(family); });
        EXPECT_TRUE(died) << points[at].what;
    }

    // A wait is only waited for where the lock has just become taken: it lasts.
    Remains Look(const Remains& previous) const
    {
        Remains remains;
        remains.lock = LockValue(family);
        remains.others =
            remains.lock == 0 && previous.lock == 0 ? previous.others : DevicesSeen(family);
        remains.again = InitialiseAgain(family);
        return remains;
    }

    // The set goes, by the administrator's command or, where that sees nothing amiss, by hand; then
    // the initialisation runs.
    std::string Mend() const
    {
        std::string means;
        if (LockValue(family) == 0 || (LockValue(family) == 1 && Region(family) != complete)) {
            if (CanRecover())
                EXPECT_EQ(Recover(family, Certainty::kForced), 0);
            means = !CanRecover() ? "?" : LockValue(family) == -1 ? "recover" : "ipcrm";
            if (LockValue(family) != -1)
                RemoveLock(family);
        }
        if (LockValue(family) == -1) {
            EXPECT_EQ(InitialiseAgain(family), "done");
            means += means.empty() ? "init" : ", init";
        }
        EXPECT_EQ(LockValue(family), 1);
        EXPECT_EQ(DevicesSeen(family), "1 devices");
        EXPECT_EQ(Region(family), complete);
        return means.empty() ? "nothing to do" : means;
    }

    // Mapped in a process of its own: here there are many regions, one after the other.
    static std::string Region(Family family)
    {
        return InChild([=] { return RegionBytes(family); }).text;
    }

    void Print(size_t first, size_t last, const Remains& remains) const
    {
        const std::string lock = remains.lock == -1  ? "no set"
                                 : remains.lock == 0 ? "taken"
                                                     : "free";
        printf("| %s | %zu to %zu: `%s` | %s | %s | %s | %s |\n",
               family == Family::kSwitch ? "switch" : "PHY", first, last,
               points[first].what.c_str(), lock.c_str(), remains.others.c_str(),
               remains.again.c_str(), remains.mends.c_str());
    }

    const Family family = GetParam();
    std::vector<DeathPoint> points;
    std::string complete;
};

TEST_P(KilledInitialisation, IsMendedByRemovingTheSetAndInitialisingAgain)
{
    points = PointsOf(Nothing, [this] { Initialise(family); });
    ASSERT_GT(points.size(), 20U);
    complete = Region(family);
    Remains phase;
    size_t first = 0;
    size_t last = 0;
    for (const size_t at : Tried(points.size())) {
        SCOPED_TRACE("before " + points[at].what);
        Kill(at);
        Remains remains = Look(phase);
        const std::string mends = Mend();
        remains.mends = remains.again == "done" ? "init" : mends;
        if (at > 0 && !(remains == phase)) {
            Print(first, last, phase);
            first = at;
        }
        phase = remains;
        last = at;
    }
    Print(first, last, phase);
}

INSTANTIATE_TEST_SUITE_P(Family, KilledInitialisation,
                         testing::Values(Family::kSwitch, Family::kPhy), [](const auto& info) {
                             return std::string(info.param == Family::kSwitch ? "Switch" : "Phy");
                         });

}  // namespace
