#include "tools/orblinkctl/access/record_check.h"

#include <algorithm>
#include <cstdint>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

constexpr uint32_t kMostVid = 4094;
constexpr uint32_t kMostPcp = 7;
constexpr uint32_t kMostMask = 0xFFF;

class Faults {
public:
    explicit Faults(std::string object) : object_(std::move(object)) {}

    void AtMost(const std::string& what, uint32_t value, uint32_t most)
    {
        if (value > most)
            list_.push_back(object_ + " has " + what + " " + std::to_string(value) +
                            ", the most is " + std::to_string(most));
    }

    void AtMostOr(const std::string& what, uint32_t value, uint32_t most, uint32_t none)
    {
        if (value != none)
            AtMost(what, value, most);
    }

    std::vector<std::string> Take() { return std::move(list_); }

private:
    std::string object_;
    std::vector<std::string> list_;
};

void Append(std::vector<std::string>& list, std::vector<std::string> more)
{
    std::move(more.begin(), more.end(), std::back_inserter(list));
}

std::vector<std::string> PortFaults(const SwitchDeviceRecord& record, unsigned device,
                                    unsigned port)
{
    Faults faults("port " + PortWord(device, port));
    const auto& config = record.config;
    faults.AtMost("VLAN", config.lanPortVlan[port], kMostVid);
    faults.AtMost("priority", config.lanPortPcp[port], kMostPcp);
    faults.AtMost("speed code", config.link[port].linkSpeed, OB_SPEED_COUNT - 1);
    // Of a switch that was never provisioned nothing else than zeros is stored.
    faults.AtMostOr("mirror destination", config.mirrorDst[port], OB_MAX_PORTS - 1, OB_NO_MIRROR);
    return faults.Take();
}

std::vector<std::string> MacVlanFaults(const MacToVlanEntry& entry, unsigned device, unsigned index)
{
    Faults faults("MAC-to-VLAN entry " + std::to_string(index) + " of switch " +
                  std::to_string(device));
    if (entry.EnableMapping == 0)
        return {};
    faults.AtMost("use mark", entry.EnableMapping, 1);
    faults.AtMost("VLAN", entry.VlanId, kMostVid);
    faults.AtMost("mask", entry.Mask, kMostMask);
    faults.AtMost("port", entry.LogPort, OB_MAX_PORTS - 1);
    return faults.Take();
}

void RequireNone(const std::vector<std::string>& faults, const std::string& mending)
{
    if (faults.empty())
        return;
    std::string text = "the shared state is damaged: " + faults.front();
    if (faults.size() > 1)
        text += " (and " + std::to_string(faults.size() - 1) + " more)";
    throw Failure{kDamaged, text + "; " + mending};
}

template <typename Region>
bool AllZero(const Region& region)
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(&region);
    return std::all_of(bytes, bytes + sizeof region, [](uint8_t byte) { return byte == 0; });
}

}  // namespace

std::vector<std::string> RecordFaults(const SwitchDeviceRecord& record, unsigned device)
{
    Faults faults("switch " + std::to_string(device));
    faults.AtMost("capability mark", record.capsValid, 1);
    faults.AtMost("configuration mark", record.configValid, 1);
    faults.AtMost("board data mark", record.bsdValid, 1);
    faults.AtMost("state", record.config.state, OB_STATE_ENABLED);
    faults.AtMostOr("HAL index", record.halIdx, OB_MAX_SWITCHES - 1, OB_NO_HAL_INDEX);
    std::vector<std::string> list = faults.Take();
    for (unsigned port = 0; port < OB_MAX_PORTS; ++port)
        Append(list, PortFaults(record, device, port));
    for (unsigned i = 0; i < OB_MAC_VLAN_ENTRIES; ++i)
        Append(list, MacVlanFaults(record.config.macToVlanTable[i], device, i));
    return list;
}

std::vector<std::string> RecordFaults(const PhyDeviceRecord& record, unsigned device)
{
    Faults faults("PHY " + std::to_string(device));
    faults.AtMost("capability mark", record.capsValid, 1);
    faults.AtMost("board data mark", record.bsdValid, 1);
    faults.AtMost("hardware state", record.config.hwState, EP_HW_STATE_ENABLED);
    faults.AtMostOr("HAL index", record.halIdx, EP_MAX_PHYS - 1, EP_NO_HAL_INDEX);
    return faults.Take();
}

void RequireSane(const SwitchDeviceRecord& record, unsigned device)
{
    const std::string number = std::to_string(device);
    RequireNone(RecordFaults(record, device), "'orblinkctl down " + number +
                                                  "' and 'orblinkctl up " + number +
                                                  " --defaults' write the defaults");
}

void RequireSane(const PhyDeviceRecord& record, unsigned device)
{
    const std::string number = std::to_string(device);
    RequireNone(RecordFaults(record, device), "'orblinkctl phy " + number +
                                                  " down' and 'orblinkctl "
                                                  "phy " +
                                                  number + " up' write it anew");
}

bool IsBlank(const SwitchDeviceRegion& region)
{
    return AllZero(region);
}

bool IsBlank(const PhyDeviceRegion& region)
{
    return AllZero(region);
}

}  // namespace ctl
