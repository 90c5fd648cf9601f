// Why a command of the board failed, as its exit code says it.
#pragma once

namespace vboard {

inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNoSuchObject = 3;
inline constexpr int kExitNotSupported = 5;

}  // namespace vboard
