// Descriptors that stay open longer than the statements that use them.
#pragma once

namespace orblink {

// Gives the descriptor under which `fd` is to be kept: never 0, 1 or 2, and closed on exec. A
// caller may have closed its standard streams; what stood in their place would receive the next
// printed line. What cannot be moved or marked is kept as it is.
int KeepDescriptor(int fd);

}  // namespace orblink
