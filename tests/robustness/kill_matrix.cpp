#include "tests/robustness/kill_matrix.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>

#include "tests/robustness/child.h"
#include "tests/robustness/recovery.h"
#include "tests/robustness/scripted_board.h"

namespace obtest {
namespace {

void Attach()
{
    uint8_t count = 0;
    ORBLINK_GetNumOfSwitches(&count);
    ETHPHY_GetNumOfPhys(&count);
}

void Nothing() {}

struct Repetition {
    int result = -1;
    Lines halCalls = {};
};

// The call in a process of its own.
Repetition Repeat(const ExportedCall& call)
{
    const Ended ended = InChild([&] {
        Attach();
        Platform().transcript.Clear();
        const int result = call.run();
        return std::to_string(result) + '\n' + Joined(Platform().transcript.Only({"hal"}));
    });
    Repetition repetition;
    std::istringstream text(ended.text);
    text >> repetition.result;
    text.ignore(1);
    for (std::string line; std::getline(text, line);)
        repetition.halCalls.push_back(line);
    return repetition;
}

// Board and lock as they are before each death, and the call as it is when nobody dies.
class Stage {
public:
    Stage(const ExportedCall& call, Caller caller)
        : call_(call), before_(caller == Caller::kAttached ? Attach : Nothing)
    {
        InitialiseElsewhere();
        if (call.prepare != nullptr)
            call.prepare();
        old_ = RegionBytes(call.family);
        points_ = PointsOf(before_, [this] { call_.run(); });
        Reset();
        healthy_ = Repeat(call);
        new_ = RegionBytes(call.family);
    }

    const std::vector<DeathPoint>& Points() const { return points_; }

    Casualty KillAt(size_t at) const
    {
        Reset();
        Casualty casualty;
        casualty.point = points_[at];
        casualty.died = DiesAt(static_cast<int>(at), before_, [this] { call_.run(); });
        casualty.lock = LockValue(call_.family);
        casualty.record = Changed();
        casualty.recovered = casualty.lock == 0 && CanRecover() && Recovered();
        FreeLock(call_.family);
        casualty.mend = Mended(at);
        return casualty;
    }

private:
    void Reset() const
    {
        if (call_.family == Family::kSwitch)
            memcpy(&Region(), old_.data(), old_.size());
        else
            memcpy(&PhyRegion(), old_.data(), old_.size());
        FreeLock(call_.family);
    }

    bool Recovered() const
    {
        const std::string before = RegionBytes(call_.family);
        return Recover(call_.family, Certainty::kRequired) == 0 && LockValue(call_.family) == 1 &&
               RegionBytes(call_.family) == before;
    }

    Share Changed() const
    {
        const std::string now = RegionBytes(call_.family);
        return now == new_ ? Share::kAll : now == old_ ? Share::kNone : Share::kPart;
    }

    std::set<std::string> ToldBefore(size_t at) const
    {
        std::set<std::string> told;
        for (size_t i = 0; i < at; ++i)
            if (points_[i].kind == PointKind::kHalCall)
                told.insert(points_[i].what);
        return told;
    }

    bool KnowsAll(const std::set<std::string>& told) const
    {
        return std::all_of(healthy_.halCalls.begin(), healthy_.halCalls.end(),
                           [&](const std::string& call) { return told.count(call) != 0; });
    }

    Mend Mended(size_t at) const
    {
        std::set<std::string> told = ToldBefore(at);
        if (KnowsAll(told) && Changed() == Share::kAll)
            return Mend::kNothingToDo;
        const Repetition again = Repeat(call_);
        told.insert(again.halCalls.begin(), again.halCalls.end());
        if (again.result == healthy_.result && KnowsAll(told) && Changed() == Share::kAll)
            return Mend::kSameCall;
        return MendedByDownAndUp() ? Mend::kDownAndUp : Mend::kNone;
    }

    // Into reset and out of it: what is stored is told to the chip. A bring-up is repeated itself.
    bool MendedByDownAndUp() const
    {
        const bool bringUp = std::string(call_.name) == "ORBLINK_ResetDisable";
        const Ended ended = InChild([&] {
            const bool up = ORBLINK_ResetEnable(0) == 0 &&
                            (bringUp ? call_.run() : ORBLINK_ResetDisable(0, 0, nullptr, 0)) == 0;
            return std::string(up ? "up" : "not up");
        });
        const size_t config = offsetof(SwitchDeviceRecord, config);
        return ended.text == "up" &&
               memcmp(&Record(0).config, new_.data() + config, sizeof(SwitchProvConfig)) == 0;
    }

    ExportedCall call_;
    void (*before_)();
    std::string old_, new_;
    std::vector<DeathPoint> points_;
    Repetition healthy_;
};

}  // namespace

std::vector<Casualty> KillAtEachPoint(const ExportedCall& call, Caller caller)
{
    const Stage stage(call, caller);
    std::vector<Casualty> casualties;
    for (const size_t at : Chosen(stage.Points()))
        casualties.push_back(stage.KillAt(at));
    return casualties;
}

std::string TableLine(const std::string& name, const std::vector<Casualty>& casualties)
{
    const auto count = [&](auto condition) {
        return std::count_if(casualties.begin(), casualties.end(), condition);
    };
    const auto record = [&](Share share) {
        return count([=](const Casualty& casualty) { return casualty.record == share; });
    };
    const auto mend = [&](Mend with) {
        return count([=](const Casualty& casualty) { return casualty.mend == with; });
    };
    std::ostringstream line;
    line << "| `" << name << "` | " << casualties.size() << " | "
         << count([](const Casualty& casualty) { return casualty.lock == 0; }) << " | "
         << (CanRecover() ? std::to_string(count([](const Casualty& one) { return one.recovered; }))
                          : "?")
         << " | " << record(Share::kNone) << " | " << record(Share::kPart) << " | "
         << record(Share::kAll) << " | " << mend(Mend::kNothingToDo) << " | "
         << mend(Mend::kSameCall) << " | " << mend(Mend::kDownAndUp) << " |";
    return line.str();
}

}  // namespace obtest
