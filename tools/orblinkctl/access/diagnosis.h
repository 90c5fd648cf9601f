// Whether a family can be used, and if not, who is in the way.
#pragma once

#include <optional>
#include <string>

#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/shared_state.h"

namespace ctl {

enum class Verdict {
    kNotInitialised,
    kGood,
    kBusy,        // a living process holds the lock
    kNoDevices,   // the lock is free: no devices, or an initialisation that was cut off
    kAbandoned,   // whoever took the lock has ended or is unknown; the settings are there
    kUnfinished,  // the same, and there is nothing yet that could be lost
    kDamaged,     // the region or the lock is not what the library made
};

struct Diagnosis {
    FamilyState state;
    Verdict verdict = Verdict::kGood;
    Holder holder = Holder::kNone;
    std::optional<Process> lastOperator;
    FileUsers users;
    // Of kDamaged, with the command that mends it.
    std::string fault;
};

// Fails when this user may not look.
Diagnosis Diagnose(Family family);

// Why nobody may take the lock from its holder; nothing when it is certain that no process holds
// it.
struct Objection {
    std::string text;
    // The operator may know better.
    bool overruled;
};
std::optional<Objection> ObjectionTo(const Diagnosis& diagnosis);

// "process 4711 (name) has held the lock since ...".
std::string HolderText(const Diagnosis& diagnosis);
// One sentence, and the next command or an empty text.
std::string VerdictText(const Diagnosis& diagnosis);
std::string NextCommand(const Diagnosis& diagnosis);
Model DiagnosisModel(const Diagnosis& diagnosis);

// "process 4711 (name)".
std::string ProcessText(const Process& process);

}  // namespace ctl
