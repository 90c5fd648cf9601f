// The System V semaphore of a family: a set of one, whose key comes from a file.
#pragma once

#include <sys/sem.h>

namespace orblink {

enum class SemaphoreStep { kDone, kOpen, kFtok, kSemget };

struct SemaphoreSet {
    int id;                // -1 unless done
    SemaphoreStep failed;  // kDone, or the step that failed
    int error;             // its errno
};

// Opens the set that exists. The key file only has to be there.
SemaphoreSet OpenSemaphoreSet(const char* keyFile);

// Creates it, and the key file with it; fails while it exists. Its value is 0.
SemaphoreSet CreateSemaphoreSet(const char* keyFile);

// False, with errno set, when semop fails. Changes are constants: a call puts nothing together.
[[gnu::always_inline]] inline bool OperateSemaphore(int id, const sembuf& change)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): semop only reads it
    return semop(id, const_cast<sembuf*>(&change), 1) == 0;
}

// An error that says that the set is gone, so that the id is of no further use.
bool MeansSetIsGone(int error);

}  // namespace orblink
