// A shared-memory object before it is mapped.
#pragma once

#include <sys/stat.h>

#include <cstddef>

namespace orblink {

// A creator that failed half-way leaves an object without its size: touching its mapping would end
// the process with the semaphore held.
inline bool IsCutShort(int fd, size_t size)
{
    struct stat object = {};
    return fstat(fd, &object) == 0 && S_ISREG(object.st_mode) &&
           object.st_size < static_cast<off_t>(size);
}

}  // namespace orblink
