// Who is served first when processors are short.
#pragma once

namespace vboard {

// The board goes before the programs on it, as hardware does: while hosts send as fast as they can
// its clients are answered all the same. Whoever lacks the right to that has everything served,
// only later. To be called when this process starts no program any more.
void GoBeforePrograms();

}  // namespace vboard
