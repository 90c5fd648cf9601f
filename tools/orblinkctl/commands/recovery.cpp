// Who holds the locks, and giving them back after a process has ended in the middle of a call.
#include "tools/orblinkctl/commands/recovery.h"

#include <sys/mman.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstring>

#include "tools/orblinkctl/access/held_lock.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/doctor.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

union SemaphoreArgument {
    int value;
    semid_ds* set;
};

[[noreturn]] void FailWith(const std::string& what)
{
    const int error = errno;
    throw Failure{error == EPERM || error == EACCES ? kPermission : kFailed,
                  what + ": " + std::strerror(error)};
}

// The value is set, not raised: should the holder live after all, its own unlock does no harm
// beyond what the operator has forced.
void FreeLock(const LockState& lock, const char* name)
{
    if (semctl(lock.id, 0, SETVAL, SemaphoreArgument{.value = 1}) != 0)
        FailWith(std::string("cannot free the lock of the ") + name + " family");
}

bool NeedsAction(const Diagnosis& found)
{
    return found.verdict == Verdict::kNoDevices || found.verdict == Verdict::kAbandoned ||
           found.verdict == Verdict::kUnfinished;
}

bool IsBroken(const Diagnosis& found)
{
    return found.verdict == Verdict::kDamaged || found.verdict == Verdict::kAbandoned ||
           found.verdict == Verdict::kUnfinished;
}

std::string Mend(const Diagnosis& found)
{
    const Family family = found.state.family;
    if (found.verdict == Verdict::kAbandoned) {
        FreeLock(found.state.lock, NamesOf(family).name);
        return "the lock is free, every setting is kept";
    }
    // A free lock is taken first: nobody is in a call while it goes.
    std::optional<HeldLock> lock;
    if (found.verdict == Verdict::kNoDevices)
        lock.emplace(family, found.state.lock.id, 0);
    UndoInitialisation(family);
    return "the initialisation is undone: run 'orblinkctl init'";
}

// What is done, or found, for one family; and the exit code when it is not well in the end.
void RecoverFamily(Call& call, const Diagnosis& found, Model& entry)
{
    entry["done"] = nullptr;
    const std::string next = NextCommand(found);
    entry["next"] = next.empty() ? Model() : Model(next);
    const auto objection = ObjectionTo(found);
    if (!call.Has("--apply")) {
        if (IsBroken(found))
            call.exitCode = kDamaged;
    } else if (objection && !(call.Has("--force") && objection->overruled)) {
        call.exitCode = kUnsupported;
        entry["next"] =
            objection->overruled ? Model("orblinkctl recover --apply --force") : Model();
    } else if (NeedsAction(found)) {
        entry["done"] = Mend(found);
        entry["next"] = nullptr;
    } else if (IsBroken(found)) {
        call.exitCode = kDamaged;
    }
}

bool Wanted(const Call& call, Family family)
{
    return call.Has("--switch") == call.Has("--phy") ||
           call.Has(family == Family::kPhy ? "--phy" : "--switch");
}

Model Recover(Call& call)
{
    if (call.Has("--force") && !call.Has("--apply"))
        throw Failure{kUsage, "--force belongs to --apply"};
    Model model;
    model["recovery"] = Model::array();
    for (const Family family : {Family::kSwitch, Family::kPhy}) {
        if (!Wanted(call, family))
            continue;
        const Diagnosis found = Diagnose(family);
        Model entry = DiagnosisModel(found);
        RecoverFamily(call, found, entry);
        model["recovery"].push_back(std::move(entry));
    }
    return model;
}

void PrintUsers(const Model& entry, std::string& out)
{
    std::string list;
    for (const auto& user : entry["users"])
        list +=
            (list.empty() ? "" : ", ") + Text(user["process"]) + " (" + Text(user["name"]) + ")";
    if (!list.empty())
        Paragraph(out, {"  processes that use the region: ", list});
    if (entry["hidden_processes"] != 0)
        Paragraph(out,
                  {"  processes that only root may look into: ", Text(entry["hidden_processes"])});
    if (entry["waiting"] != 0)
        Paragraph(out, {"  calls that wait for the lock: ", Text(entry["waiting"])});
}

void PrintRecovery(const Model& model, std::string& out)
{
    for (const auto& entry : model["recovery"]) {
        Paragraph(out,
                  {entry["family"] == "phy" ? "PHY" : "switch", " family: ", Text(entry["text"])});
        PrintUsers(entry, out);
        if (!entry["done"].is_null())
            Paragraph(out, {"  done: ", Text(entry["done"])});
        else if (!entry["objection"].is_null())
            Paragraph(out, {"  in the way: ", Text(entry["objection"])});
        if (!entry["next"].is_null())
            Paragraph(out, {"  next: ", Text(entry["next"])});
    }
}

constexpr Command kRecoveryCommands[] = {
    {"recover", "--apply --force --switch --phy",
     "who holds the locks; with --apply give back what an ended process left", "", Recover,
     PrintRecovery},
    {"doctor", "", "check everything; each line is ok or says what mends it",
     "ORBLINK_GetSwitchDevices ORBLINK_GetPortLink ETHPHY_GetPhyData ETHPHY_ReadMdio", Examine,
     PrintChecks},
};

}  // namespace

void UndoInitialisation(Family family)
{
    const FamilyNames& names = NamesOf(family);
    const LockState lock = LookAtLock(family);
    if (lock.Exists() && semctl(lock.id, 0, IPC_RMID) != 0)
        FailWith(std::string("cannot remove the lock of the ") + names.name + " family");
    if (shm_unlink(names.region) != 0 && errno != ENOENT)
        FailWith(std::string("cannot remove /dev/shm") + names.region);
}

void FreeAbandonedLock(Family family)
{
    const Diagnosis found = Diagnose(family);
    if (found.verdict == Verdict::kAbandoned && found.holder == Holder::kEnded)
        FreeLock(found.state.lock, NamesOf(family).name);
}

void RequireOwnRegion(Family family)
{
    if (const auto fault = OriginFault(family, LookAtRegion(family)))
        throw Failure{kDamaged, *fault};
}

std::span<const Command> RecoveryCommands()
{
    return kRecoveryCommands;
}

}  // namespace ctl
