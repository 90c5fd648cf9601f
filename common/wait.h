// Waits that a signal cannot shorten, and that signals cannot prolong.
#pragma once

namespace orblink {

// Waits with usleep or sleep. A call that a signal cut short is followed by usleep for what is left
// by the monotonic clock; one that fails for any other reason ends the wait.
void WaitMicroseconds(unsigned microseconds);
void WaitSeconds(unsigned seconds);

}  // namespace orblink
