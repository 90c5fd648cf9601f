// What the monitor watches: the state of the board as settings with values.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// By object and setting, such as {"port 0:1", "link"}.
using WatchedState = std::map<std::pair<std::string, std::string>, Model>;

WatchedState ReadWatchedState();

}  // namespace ctl
