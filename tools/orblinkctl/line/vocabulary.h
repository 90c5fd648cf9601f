// What may stand for each argument and which options there are.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ctl {

// An argument of a synopsis, by its name there.
struct Argument {
    const char* name;
    const char* allowed;
    // Null: a number from least to most.
    bool (*check)(std::string_view word);
    uint64_t least;
    uint64_t most;
    // Words that completion offers, separated by blanks.
    const char* candidates;
};

const Argument& ArgumentNamed(std::string_view name);
std::span<const Argument> Arguments();
bool Accepts(const Argument& argument, std::string_view word);

struct OptionDefinition {
    const char* name;
    // Name of the argument it takes, empty for a flag.
    const char* argument;
    const char* help;
    // Belongs to every command.
    bool global;
};

std::span<const OptionDefinition> Options();
const OptionDefinition& OptionNamed(std::string_view name);

}  // namespace ctl
