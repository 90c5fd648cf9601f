// The whole board as text.
#pragma once

#include <string>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

void PrintBoard(const Model& model, std::string& out);

}  // namespace ctl
