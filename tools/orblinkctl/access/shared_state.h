// What two families share between processes: a lock and a region each. Looking at them creates
// nothing, takes no lock and maps nothing.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/processes.h"

namespace ctl {

enum class Family { kSwitch, kPhy };

struct FamilyNames {
    const char* name;
    const char* keyFile;
    // As shm_open() takes it.
    const char* region;
    size_t regionSize;
    size_t countOffset;
};
const FamilyNames& NamesOf(Family family);

struct LockState {
    // -1 when there is none; `error` says why.
    int id = -1;
    int error = 0;
    int value = 0;
    unsigned waiting = 0;
    // Who locked or unlocked last, and when; 0 for nobody, or for a process of another namespace.
    pid_t lastOperator = 0;
    int64_t lastOperation = 0;
    int64_t created = 0;
    uid_t owner = 0;

    bool Exists() const { return id >= 0; }
};

struct RegionState {
    bool exists = false;
    int error = 0;
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;
    uint64_t size = 0;
    dev_t device = 0;
    ino_t inode = 0;
    // Of an object that is long enough and may be read.
    std::optional<unsigned> devices;
};

struct FamilyState {
    Family family;
    LockState lock;
    RegionState region;
};

LockState LookAtLock(Family family);
RegionState LookAtRegion(Family family);
FamilyState LookAt(Family family);

// Why a region cannot be trusted, with the command that mends it; nothing for a good one. Whoever
// may write a region may name the library that is loaded, so root takes none of somebody else.
std::optional<std::string> OriginFault(Family family, const RegionState& region);
// The same, and a region that is too short: touching its end would end the process.
std::optional<std::string> RegionFault(Family family, const RegionState& region);

enum class Holder {
    kNone,     // the lock is free
    kAlive,    // the process that took it lives
    kEnded,    // the process that took it has ended
    kUnknown,  // nobody can say who took it
};

// Who holds a lock. `lastOperator` is the process that has the lock's last operator as its number
// now; one that started after that operation is another one.
Holder JudgeHolder(const LockState& lock, const std::optional<Process>& lastOperator);

}  // namespace ctl
