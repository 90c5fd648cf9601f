// A change of the configuration that is taken back unless somebody confirms it in time. The old
// configuration is in the hands of a process of its own, which no signal to the caller, no closed
// terminal and no lost login reaches.
#pragma once

#include <functional>
#include <string>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/unique_descriptor.h"

namespace ctl {

// NOLINTNEXTLINE(bugprone-exception-escape): a model that is moved does not throw
struct PendingChange {
    std::string file;
    double seconds = 0;
    // {"setting", "board", "wanted"} of each.
    Model differences;
};

// How it ended: an empty text, or why the changes could not be taken back.
struct GuardOutcome {
    bool kept = false;
    std::string failure;
};

// The caller's end. Should the caller end in any way before a decision, the guard takes the changes
// back at once.
class Guard {
public:
    // Fails before anything is changed when another change waits for its confirmation.
    Guard(const PendingChange& change, const std::function<void()>& takeBack);
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() = default;

    void StartCountdown();
    GuardOutcome Keep();
    GuardOutcome TakeBack();

    // Readable once somebody else has decided.
    int Channel() const { return channel_.Get(); }
    GuardOutcome Wait();

private:
    UniqueDescriptor channel_;
};

// From another process. Each fails when nothing is pending.
Model PendingModel();
GuardOutcome ConfirmPending();
GuardOutcome TakeBackPending();
bool AnythingPending();

}  // namespace ctl
