// What is set to go wrong now.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <vector>

#include "virtual_board/description/fault_kinds.h"

namespace vboard {

class Faults {
public:
    void Add(const Fault& fault) { active_.push_back(fault); }
    size_t Clear();  // the number that was set

    // Counts one occurrence; the value when a fault strikes it.
    std::optional<uint32_t> Strike(FaultId id);

    // For a fault that is a condition, not an event.
    bool IsSet(FaultId id) const;

    nlohmann::ordered_json Show() const;

private:
    std::vector<Fault> active_;
};

}  // namespace vboard
