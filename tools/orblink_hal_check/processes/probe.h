// Runs steps in processes of their own. One that crashes, ends the program or hangs becomes a finding,
// and the next process goes on with the step after it.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace halcheck {

struct Step {
    const char* slot;      // "" for those that concern several
    const char* ifItEnds;  // the check that a process ended by it fails
    std::function<void()> run;
};

using Steps = std::vector<Step>;

struct ProbeRules {
    std::string library;  // as the loader finds it
    std::chrono::milliseconds patience;
};

// How a process takes part in the board before its steps; false ends it.
enum class Entry { kLoad, kWatch, kAttachToSwitches, kAttachToPhys };

// False when a process could not be started or take part.
bool RunSteps(const ProbeRules& rules, Entry entry, const Steps& steps);

}  // namespace halcheck
