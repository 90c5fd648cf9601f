// Result codes of the exported operations.
#pragma once

namespace orblink {

constexpr int RC_OK = 0;
constexpr int RC_ERROR = -1;

}  // namespace orblink
