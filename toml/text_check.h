// What is no file of this project whatever it says, found before the TOML parser reads it: it would
// take seconds or more stack than there is, or go astray.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace toml_text {

// Boards and configurations take some kilobytes.
inline constexpr size_t kLongestFile = 65'536;
inline constexpr size_t kMostDots = 16;

struct Complaint {
    uint32_t line;
    uint32_t column;
    std::string what;
};

std::optional<Complaint> Check(std::string_view text);

}  // namespace toml_text
