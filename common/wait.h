// Waits that a signal cannot shorten.
#pragma once

namespace orblink {

void WaitMicroseconds(unsigned microseconds);
void WaitSeconds(unsigned seconds);

}  // namespace orblink
