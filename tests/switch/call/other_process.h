// A real second process beside the test's own. It is forked when the object is made and waits there
// until it is started: forked before the library is used, it attaches by itself.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "tests/support/switch_fixture.h"

namespace obtest {

class OtherProcess {
public:
    // What the process does, and what it has to say about it.
    explicit OtherProcess(std::function<std::string()> work);
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    void Start();
    // What the work returned, once the process has ended; empty when it was killed.
    std::string Result();
    // Start and Result.
    std::string Run();
    // Ends it as a crash would, and waits until it is gone.
    void Kill();

private:
    void Reap();

    pid_t pid_ = -1;
    int start_ = -1;
    int result_ = -1;
};

// Initialises the family in a process that then ends: this process has still to attach.
void InitElsewhere(const SwitchBoard& board = SwitchBoard::With({{}}), uint32_t arg = 1);

// Waits, at most ten seconds, until the condition holds.
bool Eventually(const std::function<bool()>& condition);

}  // namespace obtest
