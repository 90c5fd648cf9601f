// A POSIX shared-memory object that the processes of a family map.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace orblink {

enum class CreateStep { kDone, kShmOpen, kFtruncate };

struct SharedObject {
    CreateStep failed;  // kDone, or the step that failed
    int error;          // its errno
};

// Gives the object its size; one that exists is used as it is.
SharedObject CreateSharedObject(const char* name, size_t size);

enum class MapStep { kDone, kShmOpen, kOwner, kSize, kMmap };

struct SharedMapping {
    void* address;   // null unless done
    MapStep failed;  // kDone, or the step that failed
    int error;       // its errno, where the step is a call
    uid_t owner;     // of the object, where the owner was refused
};

// Maps the object for reading and writing, for the life of the process; so long its descriptor
// stays open. Two objects are refused:
//  - one that root does not own, in a process whose effective user is root: its contents name
//    libraries to load;
//  - one that is shorter than the size, as a creator that failed half-way leaves it: touching its
//    mapping would end the process with the family's semaphore held.
SharedMapping MapSharedObject(const char* name, size_t size);

}  // namespace orblink
