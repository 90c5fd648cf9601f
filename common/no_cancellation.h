// Keeps the calling thread from being cancelled for as long as the object lives: a thread that ended
// inside a call would take the family's semaphore with it.
#pragma once

#include <pthread.h>

namespace orblink {

class NoCancellation {
public:
    [[gnu::always_inline]] NoCancellation()
    {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
    }
    [[gnu::always_inline]] ~NoCancellation() { pthread_setcancelstate(before_, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace orblink
