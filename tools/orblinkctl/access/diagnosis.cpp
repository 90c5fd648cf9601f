#include "tools/orblinkctl/access/diagnosis.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/text_safety.h"

namespace ctl {

namespace {

// An initialisation that began less than so many seconds ago may not have made its region yet.
constexpr int64_t kMomentAgo = 2;

bool NothingToLose(const FamilyState& state)
{
    return state.lock.lastOperation == 0 || state.region.devices.value_or(0) == 0;
}

Verdict VerdictOf(const Diagnosis& found)
{
    if (!found.fault.empty())
        return Verdict::kDamaged;
    if (!found.state.lock.Exists())
        return Verdict::kNotInitialised;
    if (found.holder == Holder::kAlive)
        return Verdict::kBusy;
    if (found.holder == Holder::kNone)
        return found.state.region.devices.value_or(0) == 0 ? Verdict::kNoDevices : Verdict::kGood;
    return NothingToLose(found.state) ? Verdict::kUnfinished : Verdict::kAbandoned;
}

// An object that was made and not given its size is what a killed initialisation leaves.
std::string FaultOf(Family family, const RegionState& region)
{
    const bool unsized = region.exists && region.size == 0;
    return (unsized ? OriginFault(family, region) : RegionFault(family, region)).value_or("");
}

std::string LockFault(const LockState& lock)
{
    if (!lock.Exists() || lock.value <= 1)
        return {};
    return "the lock counts " + std::to_string(lock.value) +
           " instead of 0 or 1, and no longer keeps calls apart: restart the machine";
}

void RequireSight(const FamilyNames& names, int error, const std::string& what)
{
    if (error == EACCES || error == EPERM)
        throw Failure{kPermission, std::string("no permission to look at the ") + names.name +
                                       " family (" + what + "): " + std::strerror(error)};
}

std::string Since(int64_t seconds)
{
    const time_t when = static_cast<time_t>(seconds);
    tm parts = {};
    char text[64];
    localtime_r(&when, &parts);
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return std::string(text) + " (" + std::to_string(std::time(nullptr) - seconds) + " s ago)";
}

Model TimeOrNull(int64_t seconds)
{
    return seconds == 0 ? Model() : Model(seconds);
}

const char* HolderWord(Holder holder)
{
    switch (holder) {
        case Holder::kNone:
            return "none";
        case Holder::kAlive:
            return "alive";
        case Holder::kEnded:
            return "ended";
        default:
            return "unknown";
    }
}

const char* VerdictWord(Verdict verdict)
{
    static constexpr const char* kWords[] = {
        "not initialised", "good", "busy", "no devices", "abandoned", "unfinished", "damaged"};
    return kWords[static_cast<size_t>(verdict)];
}

}  // namespace

Diagnosis Diagnose(Family family)
{
    Diagnosis found;
    found.state = LookAt(family);
    const FamilyNames& names = NamesOf(family);
    RequireSight(names, found.state.lock.error, names.keyFile);
    found.fault = FaultOf(family, found.state.region);
    if (found.fault.empty())
        found.fault = LockFault(found.state.lock);
    if (found.fault.empty() && found.state.region.exists)
        RequireSight(names, found.state.region.error, std::string("/dev/shm") + names.region);
    if (found.state.lock.Exists()) {
        found.lastOperator = FindProcess(found.state.lock.lastOperator);
        found.holder = JudgeHolder(found.state.lock, found.lastOperator);
    }
    if (found.state.region.exists)
        found.users = UsersOf(found.state.region.device, found.state.region.inode);
    found.verdict = VerdictOf(found);
    return found;
}

std::optional<Objection> ObjectionTo(const Diagnosis& found)
{
    if (found.holder == Holder::kAlive)
        return Objection{ProcessText(*found.lastOperator) + " holds the lock and lives", false};
    if (found.holder != Holder::kUnknown)
        return std::nullopt;
    if (!found.users.processes.empty())
        return Objection{
            ProcessText(found.users.processes.front()) + " uses the region and may hold the lock",
            true};
    if (found.users.hidden > 0)
        return Objection{"one of " + std::to_string(found.users.hidden) +
                             " processes that only root may look into may hold the lock",
                         true};
    // The kernel has no number for it here, which is all that can be known of it.
    if (found.state.lock.lastOperation != 0 && found.state.lock.lastOperator == 0)
        return Objection{
            "whoever used the lock last is in another PID namespace, where it may live", true};
    if (found.state.lock.lastOperation == 0 &&
        std::time(nullptr) - found.state.lock.created < kMomentAgo)
        return Objection{"the initialisation began a moment ago", true};
    return std::nullopt;
}

std::string HolderText(const Diagnosis& found)
{
    const LockState& lock = found.state.lock;
    if (lock.lastOperation == 0)
        return "nobody has used the lock since it was made at " + Since(lock.created);
    std::string who = "an unknown process";
    if (found.holder == Holder::kAlive && found.lastOperator)
        who = ProcessText(*found.lastOperator);
    if (found.holder == Holder::kEnded)
        who = "process " + std::to_string(lock.lastOperator) + ", which has ended,";
    return who + " has held the lock since " + Since(lock.lastOperation);
}

std::string VerdictText(const Diagnosis& found)
{
    switch (found.verdict) {
        case Verdict::kNotInitialised:
            return "not initialised";
        case Verdict::kGood:
            return std::to_string(found.state.region.devices.value_or(0)) +
                   " found, the lock is free";
        case Verdict::kNoDevices:
            return "no devices, or initialisation unfinished; the lock is free";
        case Verdict::kBusy:
            return "busy: " + HolderText(found);
        case Verdict::kAbandoned:
            return "locked: " + HolderText(found);
        case Verdict::kUnfinished:
            return "initialisation unfinished: " + HolderText(found);
        default:
            return "damaged: " + found.fault;
    }
}

std::string NextCommand(const Diagnosis& found)
{
    switch (found.verdict) {
        case Verdict::kNotInitialised:
            return "orblinkctl init";
        case Verdict::kNoDevices:
        case Verdict::kAbandoned:
        case Verdict::kUnfinished:
            return "orblinkctl recover --apply";
        default:
            return {};
    }
}

Model DiagnosisModel(const Diagnosis& found)
{
    const FamilyState& state = found.state;
    Model model;
    model["family"] = state.family == Family::kPhy ? "phy" : "switch";
    model["verdict"] = VerdictWord(found.verdict);
    model["text"] = VerdictText(found);
    model["lock_value"] = state.lock.Exists() ? Model(state.lock.value) : Model();
    model["waiting"] = state.lock.waiting;
    model["last_operator"] =
        state.lock.lastOperator == 0 ? Model() : Model(state.lock.lastOperator);
    model["last_operation"] = TimeOrNull(state.lock.lastOperation);
    model["created"] = TimeOrNull(state.lock.created);
    model["holder"] = HolderWord(found.holder);
    model["devices"] = state.region.devices ? Model(*state.region.devices) : Model();
    model["users"] = Model::array();
    for (const auto& process : found.users.processes) {
        Model user;
        user["process"] = process.id;
        user["name"] = Printable(process.name);
        model["users"].push_back(std::move(user));
    }
    model["hidden_processes"] = found.users.hidden;
    const auto objection = ObjectionTo(found);
    model["objection"] = objection ? Model(objection->text) : Model();
    return model;
}

std::string ProcessText(const Process& process)
{
    return "process " + std::to_string(process.id) + " (" + Printable(process.name) + ")";
}

}  // namespace ctl
