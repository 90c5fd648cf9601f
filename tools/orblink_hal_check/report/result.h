// What a check of a library came to; on its way from the board to the report it is JSON.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace halcheck {

struct Finding {
    std::string check;
    std::string slot;  // "" when it concerns none of its own
    std::string what;  // of the first time
    uint32_t times;
};

struct SlotTime {
    std::string family;
    std::string slot;
    uint32_t calls;
    uint32_t accesses;      // most in one call
    uint64_t microseconds;  // of the longest
};

struct Result {
    std::string library;
    std::vector<std::string> families;
    std::vector<Finding> findings;
    std::vector<SlotTime> times;
    std::vector<std::string> notes;

    void Add(const std::string& check, const std::string& slot, const std::string& what);
};

nlohmann::json ToJson(const Result& result);
Result FromJson(const nlohmann::json& json);

}  // namespace halcheck
