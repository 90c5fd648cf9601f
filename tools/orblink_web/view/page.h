// The page as a whole, complete without any script.
#pragma once

#include <string>

#include "tools/orblink_web/view/board_view.h"

namespace web {

std::string Page(const BoardView& view, const std::string& search);

// What the page is made of beside its text.
extern const char kStyleSheet[];
extern const char kScript[];
extern const char kIcon[];

}  // namespace web
