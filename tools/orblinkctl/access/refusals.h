// What an operation of the library that failed is called in the operator's words: what was not
// done, why, and what to do next.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tools/orblinkctl/access/failure.h"

namespace ctl {

struct Refusal {
    const char* operation;
    // Follows the object: "switch 0: the MTU was not set".
    const char* text;
};

std::span<const Refusal> Refusals();

// A reason that the library's lines give.
struct Reason {
    // What the line holds.
    const char* line;
    ExitCode code;
    // OBJECT, SWITCH, PORT and PHY stand for what the operation was about.
    const char* text;
};

std::span<const Reason> Reasons();

// The failure of an operation on an object ("port 0:2", "PHY 0 register 0x0002"), from what the
// library has said.
Failure RefusalOf(std::string_view object, std::string_view operation);

}  // namespace ctl
