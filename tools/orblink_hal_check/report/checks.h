// What is checked: each finding has the id of one of these.
#pragma once

#include <span>
#include <string_view>

namespace halcheck {

enum class Applies { kBoth, kSwitch };

struct Check {
    const char* id;
    const char* meaning;  // what a finding says about the library
    Applies applies;
};

std::span<const Check> Checks();
bool IsCheck(std::string_view id);

}  // namespace halcheck
