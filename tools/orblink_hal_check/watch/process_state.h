// What a slot must leave as it is in the process that calls it: looked at when the object is made and
// when it goes.
#pragma once

#include <array>
#include <csignal>
#include <string>

namespace halcheck {

class ProcessUntouched {
public:
    // Once a slot has been called, it has opened what it keeps open: then no more may be left.
    explicit ProcessUntouched(bool calledBefore);
    ~ProcessUntouched();
    ProcessUntouched(const ProcessUntouched&) = delete;
    ProcessUntouched& operator=(const ProcessUntouched&) = delete;

private:
    struct State {
        std::string folder;
        unsigned fileModeMask;
        sigset_t blocked;
        std::array<void*, 32> handlers;
    };
    static State Now();

    State before_;
    bool calledBefore_;
    int descriptors_;
    int threads_;
};

}  // namespace halcheck
