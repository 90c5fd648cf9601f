#include "tools/orblink_hal_check/report/checks.h"

#include <algorithm>

namespace halcheck {

std::span<const Check> Checks()
{
    using enum Applies;
    static constexpr Check kChecks[] = {
        {"library.name-too-long",
         "the file name has more than 31 characters, so that board data cannot name it", kBoth},
        {"library.calls-api",
         "it imports functions of the API, which take the lock that slots run under", kBoth},
        {"table.size", "the table is shorter than its type", kBoth},
        {"table.missing-slot", "a mandatory slot is null", kBoth},
        {"table.not-code", "a slot does not point to code", kBoth},
        {"init.failed", "Init failed", kBoth},
        {"bringup.failed", "the library could not bring the device up", kBoth},
        {"bringup.restore-failed", "a bring-up that restores the settings failed", kBoth},
        {"private.kept-in-process",
         "it works in the process that called Init only, or another process reads another value",
         kBoth},
        {"private.overrun", "it wrote outside of its private data", kBoth},
        {"private.zero-crashes",
         "a slot ended the process while the private data were zero, as after an Init that failed",
         kBoth},
        {"lock.reentry", "a slot called a function that takes a lock of the library", kBoth},
        {"pointer.kept", "it used a pointer after the call that it was given to", kBoth},
        {"buffer.overrun", "it reached past the end of a buffer", kBoth},
        {"buffer.underrun", "it wrote before the beginning of a buffer", kBoth},
        {"buffer.const-written", "it wrote to a buffer that it may only read", kBoth},
        {"result.not-filled", "a slot succeeded and left its result unwritten", kBoth},
        {"result.out-of-range", "a result is none of the values that there are", kBoth},
        {"result.read-back", "what was set is not what is read", kSwitch},
        {"caps.ports", "the number of ports is not 1 to 8", kSwitch},
        {"caps.port-type", "an interface type is above 6, or the mark for a PHY is not 0 or 1",
         kSwitch},
        {"caps.unstable", "the capabilities of one device changed between two readings", kBoth},
        {"bus.failure-hidden", "a slot succeeded although every register access failed", kBoth},
        {"range.crash", "a value out of range ended the process", kBoth},
        {"range.port-accepted", "a slot succeeded for a port that the switch does not have",
         kSwitch},
        {"null.crash", "a null pointer that callers may give ended the process", kBoth},
        {"slot.crash", "an ordinary call ended the process by a signal", kBoth},
        {"slot.exits", "a call ended the program or threw an exception", kBoth},
        {"slot.hangs", "a call did not return in time", kBoth},
        {"slot.too-slow", "a call held the lock for longer than the limit", kBoth},
        {"walk.context", "the context word of a MAC entry is not the low 32 bits of the context",
         kSwitch},
        {"walk.goes-on", "the MAC walk went on after the callback had returned 0", kSwitch},
        {"walk.null-entry", "the MAC walk handed out a null entry", kSwitch},
        {"walk.late-callback", "the callback of a MAC walk was called after the walk", kSwitch},
        {"process.thread-left", "a call left a thread behind", kBoth},
        {"process.descriptor-leak", "each call leaves a descriptor open", kBoth},
        {"process.changed",
         "a call changed the signals, the folder or the file mode mask of the process", kBoth},
    };
    return kChecks;
}

bool IsCheck(std::string_view id)
{
    return std::ranges::any_of(Checks(), [&](const Check& check) { return check.id == id; });
}

}  // namespace halcheck
