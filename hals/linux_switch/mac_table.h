// The bridge's forwarding database.
#pragma once

#include "hals/linux_switch/session.h"

namespace linux_switch {

// Forgets the stations, those that somebody has set as well; 0 or an error number.
int EmptyMacTable(Session& session);

}  // namespace linux_switch
