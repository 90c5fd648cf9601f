// What ends a command early: an exit code and one sentence for the operator.
#pragma once

#include <string>

namespace ctl {

enum ExitCode {
    kDone = 0,
    kFailed = 1,
    kUsage = 2,
    kNoSuchObject = 3,
    kInitState = 4,
    kUnsupported = 5,
    kPermission = 6,
    kBusy = 7,
    kDamaged = 8,
    kDifferent = 9,
};

struct Failure {
    ExitCode code;
    std::string text;
};

}  // namespace ctl
