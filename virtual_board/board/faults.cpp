#include "virtual_board/board/faults.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vboard {

size_t Faults::Clear()
{
    size_t count = active_.size();
    active_.clear();
    return count;
}

std::optional<uint32_t> Faults::Strike(FaultId id)
{
    for (auto fault = active_.begin(); fault != active_.end(); ++fault) {
        if (fault->kind->id != id)
            continue;
        if (fault->at > 1) {
            --fault->at;
            continue;
        }
        uint32_t value = fault->value;
        if (fault->times == 1)
            active_.erase(fault);
        else if (fault->times > 1)
            --fault->times;
        return value;
    }
    return std::nullopt;
}

bool Faults::IsSet(FaultId id) const
{
    return std::ranges::any_of(active_, [&](const Fault& fault) { return fault.kind->id == id; });
}

nlohmann::ordered_json Faults::Show() const
{
    auto shown = nlohmann::ordered_json::array();
    for (const Fault& fault : active_)
        shown.push_back({{"name", fault.kind->name},
                         {"value", fault.value},
                         {"at", fault.at},
                         {"times", fault.times}});
    return shown;
}

}  // namespace vboard
