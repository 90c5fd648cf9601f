// What a command on a board finds in its environment.
#pragma once

#include <string>

namespace vboard {

inline constexpr char kPrivilegesAreLost[] =
    "orblink-vboard: without CAP_SYS_ADMIN, programs on the board have no set-user-id rights and "
    "no file capabilities on this machine";

// In the process that becomes the command.
void SetEnvironment(const std::string& socketPath);

}  // namespace vboard
