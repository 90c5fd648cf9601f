#include "common/wait.h"

#include <errno.h>
#include <unistd.h>

namespace orblink {

void WaitMicroseconds(unsigned microseconds)
{
    // usleep does not tell how much is left: the whole wait starts over.
    while (usleep(microseconds) != 0 && errno == EINTR) {
    }
}

void WaitSeconds(unsigned seconds)
{
    while (seconds != 0)
        seconds = sleep(seconds);
}

}  // namespace orblink
