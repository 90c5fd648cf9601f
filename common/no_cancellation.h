// Keeps the calling thread from being cancelled for as long as the object lives: a thread that ended
// inside a call would take the family's semaphore with it.
#pragma once

#include <pthread.h>

namespace orblink {

class NoCancellation {
public:
    [[gnu::always_inline]] NoCancellation() : before_(Disable()) {}
    [[gnu::always_inline]] ~NoCancellation() { pthread_setcancelstate(before_, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    // By way of a local: an object whose address nobody has can live in registers.
    [[gnu::always_inline]] static int Disable()
    {
        int before;  // NOLINT(cppcoreguidelines-init-variables): the next line sets it
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
        return before;
    }

    int before_;
};

}  // namespace orblink
