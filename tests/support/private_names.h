// Names of its own for each test process: what the library and the test call /dev/shm/x, /var/tmp/x
// and the semaphore of a key file stands under other names on the machine. So tests run in
// parallel, as any user and beside a running system. Children have the names of the process they
// come from.
#pragma once

#include <sys/types.h>

#include <string>

namespace obtest {

// Takes names for this process, and starts a guardian outside of its process tree, which removes
// all that stands under them when the last process that uses them has ended, whatever ended it.
// False, with the reason on standard error, when that is not possible.
bool TakePrivateNames();

// Removes what stands under the names now; for the ordinary end, before others look.
void RemovePrivateNames();

// The path or shared object that stands for this one; the same when it is none of the machine's
// shared places, or no names were taken.
std::string PrivatePath(const char* path);
std::string PrivateObject(const char* name);

// The key of a key file's semaphore; that of ftok() when no names were taken.
key_t PrivateKey(const char* path, int id, key_t machineKey);

}  // namespace obtest
