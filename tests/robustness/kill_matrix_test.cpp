// Callers that die. Each test prints its line of the table in docs/reliability.md.
#include <cstdio>

#include "tests/robustness/kill_matrix.h"
#include "tests/robustness/recovery.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

bool BeforeTheLock(const DeathPoint& point)
{
    return point.what.rfind("sys semop(0, -1", 0) == 0;
}

void ExpectMendable(const ExportedCall& call, const std::vector<Casualty>& casualties)
{
    ASSERT_FALSE(casualties.empty());
    for (const Casualty& casualty : casualties) {
        SCOPED_TRACE("before " + casualty.point.what);
        EXPECT_TRUE(casualty.died);
        EXPECT_NE(casualty.mend, Mend::kNone);
        EXPECT_EQ(casualty.recovered, casualty.lock == 0 && CanRecover());
        // The kernel gives back the switch family's lock. The PHY family's stays with the dead.
        if (call.family == Family::kSwitch)
            EXPECT_EQ(casualty.lock, 1);
    }
}

class KillMatrix : public testing::TestWithParam<ExportedCall> {
protected:
    const ExportedCall& call = GetParam();
};

TEST_P(KillMatrix, EachDeathLeavesWhatCanBeMended)
{
    const std::vector<Casualty> casualties = KillAtEachPoint(call, Caller::kAttached);
    ExpectMendable(call, casualties);
    for (const Casualty& casualty : casualties)
        if (call.family == Family::kPhy)
            EXPECT_EQ(casualty.lock, BeforeTheLock(casualty.point) ? 1 : 0) << casualty.point.what;
    puts(TableLine(call.name, casualties).c_str());
}

INSTANTIATE_TEST_SUITE_P(Switch, KillMatrix, testing::ValuesIn(CallsOf(Family::kSwitch)),
                         [](const auto& info) { return std::string(info.param.name); });
INSTANTIATE_TEST_SUITE_P(Phy, KillMatrix, testing::ValuesIn(CallsOf(Family::kPhy)),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(KillMatrixOfANewProcess, FirstSwitchCall)
{
    const ExportedCall& call = CallNamed("ORBLINK_SetLanPortVlan");
    const std::vector<Casualty> casualties = KillAtEachPoint(call, Caller::kNew);
    ExpectMendable(call, casualties);
    EXPECT_GT(casualties.size(), 8U) << "attaching takes more calls";
    puts(TableLine("first ORBLINK_ call of a process", casualties).c_str());
}

TEST(KillMatrixOfANewProcess, FirstPhyCall)
{
    const ExportedCall& call = CallNamed("ETHPHY_SetAdminState");
    const std::vector<Casualty> casualties = KillAtEachPoint(call, Caller::kNew);
    ExpectMendable(call, casualties);
    EXPECT_GT(casualties.size(), 8U) << "attaching takes more calls";
    puts(TableLine("first ETHPHY_ call of a process", casualties).c_str());
}

}  // namespace
